// Commands and their options: a table each, from which arguments are read and the help is written.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

// What ends a command: printed as "qor COMMAND: text", status 1, or 2 for mistakes in the arguments.
struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};
struct Misuse : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Option {
  std::string name;      // "engine" for --engine, "n" for -n
  std::string argument;  // what the help calls its argument, empty for a switch
  std::string help;
  std::function<void(const std::string&)> take;
};

struct Command {
  std::string name, arguments, summary, details;
  std::string (*list)();  // more of the help, may be null
  int (*run)(std::span<const std::string> arguments);
};
extern const std::vector<Command> commands;

// Reads the arguments by the options and returns those that are none. --help prints the command's help and ends.
std::vector<std::string> parse(const std::string& command, std::span<const std::string> arguments,
                               const std::vector<Option>& options, std::size_t most);

// "1e6", "0x10", "250": a whole number from low to high. "1.5,-3": a list of numbers.
std::uint64_t whole_number(std::string_view text, std::string_view what, std::uint64_t low, std::uint64_t high);
double number(std::string_view text, std::string_view what);
std::vector<double> number_list(std::string_view text, std::string_view what);

// "no ENGINE 'mt1937', did you mean 'mt19937'?"
std::string unknown(std::string_view kind, std::string_view given, std::span<const std::string> known);
// The place of a word among those that an option knows; a Misuse otherwise.
std::size_t choice(const std::string& option, std::string_view given, std::span<const std::string> known);
std::string lower(std::string_view text);

}  // namespace cli
