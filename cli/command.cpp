#include "command.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <sstream>

#include "numbers.h"

namespace cli {

namespace {

// A paragraph a line of the text, filled to lines of 78 characters behind an indent; lines that begin with a blank stay.
void print_filled(const std::string& text, int indent) {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(' ')) {
      std::printf("%*s%s\n", indent, "", line.c_str());
      continue;
    }
    int column = 0;
    std::istringstream words(line);
    for (std::string word; words >> word; column += static_cast<int>(word.size())) {
      const bool fits = column > 0 && column + 1 + static_cast<int>(word.size()) <= 78;
      if (column > 0 && !fits) std::putchar('\n');
      if (!fits) column = indent;
      std::printf("%*s%s", fits ? 1 : indent, "", word.c_str());
      if (fits) ++column;
    }
    std::putchar('\n');
  }
}

std::string spelled(const Option& option) { return std::string(option.name.size() == 1 ? 1 : 2, '-') + option.name; }

[[noreturn]] void print_help(const Command& command, const std::vector<Option>& options) {
  std::printf("usage: qor %s %s\n\n", command.name.c_str(), command.arguments.c_str());
  print_filled(command.details, 0);
  if (command.list != nullptr) print_filled(command.list(), 0);
  std::printf("\noptions:\n");
  for (const Option& option : options) {
    std::printf("  %s\n", (spelled(option) + (option.argument.empty() ? "" : " " + option.argument)).c_str());
    print_filled(option.help, 6);
  }
  std::printf("  --help\n      this text\n");
  flush_output();
  std::exit(0);
}

// Letters to insert, drop, replace or exchange with a neighbour (V. I. Levenshtein, 1966; F. J. Damerau, 1964).
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::vector<std::size_t>> d(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) {
    for (std::size_t k = 0; k <= b.size(); ++k) {
      if (i == 0 || k == 0) {
        d[i][k] = i + k;
        continue;
      }
      d[i][k] = std::min({d[i - 1][k] + 1, d[i][k - 1] + 1, d[i - 1][k - 1] + (a[i - 1] == b[k - 1] ? 0 : 1)});
      if (i > 1 && k > 1 && a[i - 1] == b[k - 2] && a[i - 2] == b[k - 1])
        d[i][k] = std::min(d[i][k], d[i - 2][k - 2] + 1);
    }
  }
  return d[a.size()][b.size()];
}

}  // namespace

std::string lower(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

std::string unknown(std::string_view kind, std::string_view given, std::span<const std::string> known) {
  const std::string word = lower(given), text = "no " + std::string(kind) + " '" + std::string(given) + "'";
  const auto meant = [](const std::string& name) { return ", did you mean '" + name + "'?"; };
  const auto nearest =
      std::ranges::min_element(known, {}, [&](const std::string& name) { return distance(word, lower(name)); });
  if (nearest != known.end() && distance(word, lower(*nearest)) <= 1 + word.size() / 4) return text + meant(*nearest);
  const auto begins = [&](const std::string& name) { return word.size() > 1 && lower(name).starts_with(word); };
  const auto longer = std::ranges::find_if(known, begins);
  return longer == known.end() ? text : text + meant(*longer);
}

std::size_t choice(const std::string& option, std::string_view given, std::span<const std::string> known) {
  const auto found = std::ranges::find(known, lower(given));
  if (found != known.end()) return static_cast<std::size_t>(found - known.begin());
  std::string text = option + " is one of";
  for (const std::string& name : known) text += (name == known.front() ? " " : ", ") + name;
  throw Misuse(text + ", not '" + std::string(given) + "'");
}

std::vector<std::string> parse(const std::string& command, std::span<const std::string> arguments,
                               const std::vector<Option>& options, std::size_t most) {
  std::vector<std::string> rest;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& word = arguments[i];
    if (word == "--help" || word == "-h") {
      print_help(*std::ranges::find(commands, command, &Command::name), options);
    }
    if (word.size() < 2 || word[0] != '-') {
      rest.push_back(word);
      continue;
    }
    const std::size_t equals = word.find('=');
    const std::string name = word.substr(0, equals);
    const auto option = std::ranges::find(options, name, spelled);
    if (option == options.end()) {
      std::vector<std::string> names;
      std::ranges::transform(options, std::back_inserter(names), spelled);
      throw Misuse(unknown("option", name, names));
    }
    if (option->argument.empty()) {
      if (equals != std::string::npos) throw Misuse(name + " takes no value");
      option->take({});
    } else if (equals != std::string::npos) {
      option->take(word.substr(equals + 1));
    } else {
      if (++i == arguments.size()) throw Misuse(name + " needs a value, " + option->argument);
      option->take(arguments[i]);
    }
  }
  if (rest.size() > most) throw Misuse("too many arguments, from '" + rest[most] + "' on");
  return rest;
}

double number(std::string_view text, std::string_view what) {
  double value = 0;
  if (!read_number(text, value)) throw Misuse(std::string(what) + ": '" + std::string(text) + "' is not a number");
  return value;
}

std::uint64_t whole_number(std::string_view text, std::string_view what, std::uint64_t low, std::uint64_t high) {
  std::uint64_t value = 0;
  const bool hexadecimal = text.starts_with("0x");
  const char *begin = text.data() + (hexadecimal ? 2 : 0), *const last = text.data() + text.size();
  const auto [end, error] = std::from_chars(begin, last, value, hexadecimal ? 16 : 10);
  bool inside = value >= low && value <= high;
  if (error != std::errc() || end != last) {
    const double real = number(text, what);
    if (real != std::floor(real)) {
      throw Misuse(std::string(what) + ": '" + std::string(text) + "' is not a whole number");
    }
    inside = real >= static_cast<double>(low) && real <= static_cast<double>(high);
    if (inside) value = static_cast<std::uint64_t>(real);
  }
  if (!inside) {
    throw Misuse(std::string(what) + ": " + std::string(text) + " is not from " + std::to_string(low) + " to " +
                 std::to_string(high));
  }
  return value;
}

std::vector<double> number_list(std::string_view text, std::string_view what) {
  std::vector<double> list;
  while (true) {
    const std::size_t comma = text.find(',');
    list.push_back(number(text.substr(0, comma), what));
    if (comma == std::string_view::npos) return list;
    text.remove_prefix(comma + 1);
  }
}

}  // namespace cli
