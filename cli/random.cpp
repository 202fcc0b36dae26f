// qor random: variates of a stream, as text or bytes.
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>
#include <type_traits>

#include "catalog.h"
#include "command.h"
#include "numbers.h"
#include "programs.h"

namespace cli {

namespace {

constexpr std::size_t block = 4096;

struct Request {
  std::string engine = "mt19937", distribution = "bits", load, save;
  std::vector<unsigned> seeds = {1};
  std::uint64_t count = std::numeric_limits<std::uint64_t>::max(), skip = 0;
  std::size_t columns = 1;
  unsigned leap = 0, leaps = 0;
  bool raw = false, single = false;
  bool endless() const { return count == std::numeric_limits<std::uint64_t>::max(); }
};

// Draws blocks until the count is reached and writes them in rows.
template <class T, class Draw>
void write_all(const Request& request, Draw&& draw) {
  Writer out(request.raw);
  Progress progress("variates", request.endless() ? 0 : static_cast<double>(request.count));
  const std::size_t rows = std::max<std::size_t>(1, block / request.columns);
  std::vector<T> values(rows * request.columns);
  for (std::uint64_t done = 0; done < request.count;) {
    const std::size_t n = static_cast<std::size_t>(std::min<std::uint64_t>(values.size(), request.count - done));
    draw(std::span(values.data(), n));
    for (std::size_t i = 0; i < n; i += request.columns) {
      out.row(std::span<const T>(values.data() + i, std::min(request.columns, n - i)));
    }
    done += n;
    progress.at(static_cast<double>(done));
  }
  out.flush();
}

std::vector<unsigned> seeds_of(const std::string& text) {
  std::vector<unsigned> seeds;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find(',', at), text.size());
    seeds.push_back(static_cast<unsigned>(whole_number(text.substr(at, end - at), "--seed", 0, 0xFFFFFFFF)));
    at = end + 1;
  }
  return seeds;
}

qor::Stream stream_of(const Request& request) {
  const int brng = brng_of(request.engine);
  const Engine& engine = engine_of(request.engine);
  if (!request.load.empty()) {
    try {
      return qor::Stream::load(request.load);
    } catch (const qor::Error& error) {
      throw Failure(request.load + ": " + error.what());
    }
  }
  const std::vector<unsigned>& seeds = request.seeds;
  if (engine.dimensions > 0 && seeds.size() == 1 && (seeds[0] < 1 || seeds[0] > engine.dimensions)) {
    throw Misuse("--seed: the dimension of " + engine.name + " is from 1 to " + std::to_string(engine.dimensions));
  }
  return qor::Stream(brng, seeds);
}

// Better before the work than after it. What is there stays.
void check_writable(const std::string& file) {
  if (file.empty()) return;
  std::FILE* const opened = std::fopen(file.c_str(), "ab");
  if (opened == nullptr) throw Failure("cannot write " + file + ": " + std::strerror(errno));
  std::fclose(opened);
}

}  // namespace

int run_random(std::span<const std::string> arguments) {
  Request request;
  parse("random", arguments,
        {{"engine", "NAME[:MEMBER]", "the engine (mt19937); 'qor engines' lists them",
          [&](const std::string& v) { request.engine = v; }},
         {"seed", "N[,N...]", "its seed words (1); of sobol and niederr the dimension",
          [&](const std::string& v) { request.seeds = seeds_of(v); }},
         {"dist", "NAME[:P,P...]", "the distribution and its parameters (bits)",
          [&](const std::string& v) { request.distribution = v; }},
         {"n", "COUNT", "how many, 1000 or 1e6; without it the output never ends",
          [&](const std::string& v) { request.count = whole_number(v, "-n", 0, 1ull << 53); }},
         {"raw", "", "bytes instead of text: words and integers of 4 bytes, numbers of 8, or 4 with --single",
          [&](const std::string&) { request.raw = true; }},
         {"single", "", "numbers in single precision", [&](const std::string&) { request.single = true; }},
         {"columns", "N", "so many numbers a line of text (1)",
          [&](const std::string& v) {
            request.columns = static_cast<std::size_t>(whole_number(v, "--columns", 1, 1 << 20));
          }},
         {"skip", "N", "begin N elements of the engine later",
          [&](const std::string& v) { request.skip = whole_number(v, "--skip", 0, 1ull << 53); }},
         {"leapfrog", "K/N", "element K, K + N, K + 2 N ... of the engine",
          [&](const std::string& v) {
            const std::size_t slash = std::min(v.find('/'), v.size());
            if (slash == v.size()) throw Misuse("--leapfrog needs K/N");
            request.leaps = static_cast<unsigned>(whole_number(v.substr(slash + 1), "--leapfrog", 1, 1u << 30));
            request.leap = static_cast<unsigned>(whole_number(v.substr(0, slash), "--leapfrog", 0, request.leaps - 1));
          }},
         {"load", "FILE", "go on with the stream of a file, whatever engine and seed",
          [&](const std::string& v) { request.load = v; }},
         {"save", "FILE", "keep the stream in a file at the end", [&](const std::string& v) { request.save = v; }}},
        0);
  if (!request.save.empty() && request.endless()) throw Misuse("--save needs a count, -n");
  const Chosen chosen = distribution_of(request.distribution);
  qor::Stream stream = stream_of(request);
  check_writable(request.save);
  if (request.leaps > 0) stream.leapfrog(static_cast<int>(request.leap), static_cast<int>(request.leaps));
  if (request.skip > 0) stream.skip_ahead(request.skip);

  const Distribution& d = *chosen.distribution;
  const double* const p = chosen.parameters.data();
  if (d.integers != nullptr) {
    write_all<int>(request, [&](std::span<int> r) { d.integers(stream, r, p); });
  } else if (d.doubles == nullptr) {
    qor::Bits bits(stream);
    write_all<std::uint32_t>(request, [&](std::span<std::uint32_t> r) { bits.fill(r); });
  } else if (request.single) {
    write_all<float>(request, [&](std::span<float> r) { d.singles(stream, r, p); });
  } else {
    write_all<double>(request, [&](std::span<double> r) { d.doubles(stream, r, p); });
  }
  if (!request.save.empty()) stream.save(request.save);
  return 0;
}

std::string list_of_distributions() {
  std::string text = "\nDistributions, with the usual parameters:\n";
  for (const Distribution& d : distributions) {
    text.append("  ").append(d.name);
    for (std::size_t i = 0; i < d.parameters.size(); ++i) {
      const Parameter& p = d.parameters[i];
      text += i == 0 ? ':' : ',';
      text += p.name;
      if (p.usual == p.usual) text.append("=").append(std::to_string(static_cast<int>(p.usual)));
    }
    text.append(" - ").append(d.about).append("\n");
  }
  return text;
}

int run_engines(std::span<const std::string> arguments) {
  bool names = false;
  parse("engines", arguments, {{"names", "", "the names alone", [&](const std::string&) { names = true; }}}, 0);
  if (!names) {
    std::printf("%-9s %-10s %8s %6s %5s  %-13s %-9s %-5s %s\n", "name", "identifier", "members", "seed", "bits",
                "period", "leapfrog", "skip", "");
  }
  for (const Engine& e : engines) {
    BrngRecord record;
    if (__wxrGetBrngProperties(e.brng, &record) < 0) throw Failure("the library doesn't know " + e.name);
    if (names) {
      std::printf("%s\n", e.name.c_str());
    } else {
      std::printf("%-9s 0x%-8X %8d %6d %5d  %-13s %-9s %-5s %s\n", e.name.c_str(), static_cast<unsigned>(e.brng),
                  e.members, record.seedWords, record.bitsPerWord, e.period, e.leapfrogs ? "yes" : "no",
                  e.skips ? "yes" : "no", e.about);
    }
  }
  return 0;
}

}  // namespace cli
