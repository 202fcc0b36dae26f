// Makes the table of the MT2203 family and proves it.
//
//   mt2203 --search ROWS FIRST LAST   finds members FIRST .. LAST and appends them to the file ROWS, a line each
//   mt2203 --verify TABLE             proves every row of the table: period and defect
//   mt2203 --emit ROWS ... > TABLE    writes the table of all members from the rows found
//
// A search leaves out the members that stand in its file already, so that it goes on where it was stopped; several
// processes may share out the members, each with a file of its own.
//
// A member's row depends on its number alone: the first of its candidates for matA whose characteristic polynomial is
// irreducible and for which masks are found that leave no greater total defect than family_defect.
#include <NTL/GF2XFactoring.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "characteristic.h"
#include "equidistribution.h"
#include "member.h"

namespace mt2203 {
namespace {

constexpr int beam = 16;

double seconds() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }

[[noreturn]] void fail(const std::string& what) {
  std::fprintf(stderr, "mt2203: %s\n", what.c_str());
  std::exit(1);
}

const Row* given_row(int member) {
  for (const Row& row : given) {
    if (row.member == member) return &row;
  }
  return nullptr;
}
bool is_given(std::uint32_t a) {
  for (const Row& row : given) {
    if (row.a == a) return true;
  }
  return false;
}

// Lines "member matA maskB maskC"; a last line that was cut short doesn't count.
void read_rows(const char* path, std::map<int, Row>& rows) {
  std::FILE* const file = std::fopen(path, "r");
  if (file == nullptr) return;
  char line[128];
  while (std::fgets(line, sizeof line, file) != nullptr) {
    Row row;
    if (std::strchr(line, '\n') == nullptr ||
        std::sscanf(line, "%d %x %x %x", &row.member, &row.a, &row.b, &row.c) != 4) {
      continue;
    }
    rows[row.member] = row;
  }
  std::fclose(file);
}

std::optional<Row> find(int member, const Characteristic& characteristic, const IrreducibilityTest& irreducible) {
  for (int attempt = 0; attempt < attempts; ++attempt) {
    const std::uint32_t a = candidate(member, attempt);
    if (is_given(a) || !irreducible(a)) continue;
    const auto masks = Equidistribution(a, characteristic.of(a)).best_masks(beam);
    if (masks) return Row{member, a, masks->b, masks->c};
  }
  return {};
}

int search(const char* path, int first, int last) {
  std::map<int, Row> rows;
  read_rows(path, rows);
  std::FILE* const out = std::fopen(path, "a");
  if (out == nullptr) fail(std::string("can't write ") + path);
  std::fputs("\n", out);  // ends a line that was cut short
  const Characteristic characteristic;
  const IrreducibilityTest irreducible(characteristic);
  const double start = seconds();
  int found = 0, left = 0;
  for (int m = first; m <= last; ++m) left += given_row(m) == nullptr && !rows.contains(m);
  for (int m = first; m <= last; ++m) {
    if (given_row(m) != nullptr || rows.contains(m)) continue;
    const auto row = find(m, characteristic, irreducible);
    if (!row) fail("no row for member " + std::to_string(m));
    std::fprintf(out, "%d 0x%08X 0x%08X 0x%08X\n", m, row->a, row->b, row->c);
    std::fflush(out);
    ++found;
    --left;
    const double each = (seconds() - start) / found;
    std::fprintf(stderr, "\rmember %d: %d found, %d left, %.2f s each, %.0f min to go  ", m, found, left, each,
                 left * each / 60);
  }
  std::fputc('\n', stderr);
  std::fclose(out);
  return 0;
}

// FNV-1a over the table's words, the low byte first.
std::uint64_t digest(const std::vector<Row>& rows) {
  std::uint64_t h = 0xCBF29CE484222325;
  for (const Row& row : rows) {
    for (const std::uint32_t word : {row.a, row.b, row.c}) {
      for (int shift = 0; shift < 32; shift += 8) h = (h ^ (word >> shift & 255)) * 0x100000001B3;
    }
  }
  return h;
}

int emit(int count, char** paths) {
  std::map<int, Row> found;
  for (int i = 0; i < count; ++i) read_rows(paths[i], found);
  std::vector<Row> rows;
  for (int m = 0; m < members; ++m) {
    const Row* const fixed = given_row(m);
    if (fixed == nullptr && !found.contains(m)) fail("member " + std::to_string(m) + " is missing");
    rows.push_back(fixed != nullptr ? *fixed : found[m]);
  }
  std::printf(
      "// The members of the MT2203 family: row m is {matA, maskB, maskC} of member m. Made by tools/mt2203; do not "
      "edit.\n"
      "// Rows 0, 1, 2 and 1023 are fixed. The others come from a search: words matA of their pattern in an order of "
      "each\n"
      "// member's own, the first whose characteristic polynomial of degree 2203 is irreducible (so the period is\n"
      "// 2^2203 - 1) and that has masks of a total dimension defect of at most %d, found from the leading bit down "
      "with a\n"
      "// beam of %d. tools/mt2203/CMakeLists.txt tells how to make and to prove the table.\n"
      "// Digest (FNV-1a, 64 bits, of the words as bytes, low byte first): %016llX\n",
      family_defect, beam, static_cast<unsigned long long>(digest(rows)));
  for (const Row& row : rows) std::printf("{0x%08X, 0x%08X, 0x%08X},\n", row.a, row.b, row.c);
  return 0;
}

int verify(const char* path) {
  std::FILE* const file = std::fopen(path, "r");
  if (file == nullptr) fail(std::string("can't read ") + path);
  std::vector<Row> rows;
  unsigned long long written = 0;
  char line[256];
  while (std::fgets(line, sizeof line, file) != nullptr) {
    Row row{static_cast<int>(rows.size()), 0, 0, 0};
    if (std::sscanf(line, "{%x, %x, %x},", &row.a, &row.b, &row.c) == 3) rows.push_back(row);
    if (const char* at = std::strstr(line, "low byte first): ")) written = std::strtoull(at + 17, nullptr, 16);
  }
  std::fclose(file);
  if (rows.size() != members) fail("the table has " + std::to_string(rows.size()) + " rows");

  const Characteristic characteristic;
  std::set<std::uint32_t> words;
  int bad = 0, worst = -1, worst_defect = -1, best_defect = degree * 32;
  const auto check = [&bad](bool right, const Row& row, const char* what) {
    if (right) return;
    std::printf("\nmember %d (0x%08X, 0x%08X, 0x%08X): %s\n", row.member, row.a, row.b, row.c, what);
    ++bad;
  };
  for (const Row& row : rows) {
    const Row* const fixed = given_row(row.member);
    check(fixed == nullptr || (fixed->a == row.a && fixed->b == row.b && fixed->c == row.c), row, "is fixed, not this");
    check(words.insert(row.a).second, row, "the same polynomial as another member");
    check((row.b & 0x7F) == 0 && (row.c & 0x7FFF) == 0, row, "low bits of a mask are set");
    check((row.a & 0x8000F001) == 0x80000001, row, "matA is not of the pattern");
    const NTL::GF2X f = characteristic.of(row.a);
    if (NTL::IterIrredTest(f) == 0) {
      check(false, row, "the polynomial is reducible");
      continue;
    }
    const int defect = Equidistribution(row.a, f).of(row.b, row.c).defect;
    check(defect <= family_defect, row, "the defect is too great");
    if (defect > worst_defect) {
      worst = row.member;
      worst_defect = defect;
    }
    if (defect < best_defect) best_defect = defect;
    std::fprintf(stderr, "\rmember %d proved  ", row.member);
  }
  std::fputc('\n', stderr);
  if (written != digest(rows)) {
    std::printf("the digest is %016llX\n", static_cast<unsigned long long>(digest(rows)));
    ++bad;
  }
  std::printf("%d rows, %d findings; total defects %d to %d, the worst is member %d\n", members, bad, best_defect,
              worst_defect, worst);
  return bad != 0;
}

}  // namespace
}  // namespace mt2203

int main(int argc, char** argv) {
  const std::string command = argc > 1 ? argv[1] : "";
  if (command == "--search" && argc == 5) return mt2203::search(argv[2], std::atoi(argv[3]), std::atoi(argv[4]));
  if (command == "--verify" && argc == 3) return mt2203::verify(argv[2]);
  if (command == "--emit" && argc > 2) return mt2203::emit(argc - 2, argv + 2);
  std::fputs("usage: mt2203 --search ROWS FIRST LAST | --verify TABLE | --emit ROWS ...\n", stderr);
  return 2;
}
