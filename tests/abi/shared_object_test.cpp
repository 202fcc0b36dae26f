// The built shared object as a loader and a 32-bit caller find it: names, needed libraries, sections, instructions.
#include "abi/shared_object.h"

#include <gtest/gtest.h>

#include <map>

namespace {

using binary::all_matches;
using binary::joined;
using binary::lines_of;

const std::string library = QOR_LIBRARY;

#ifdef QOR_SANITIZE
#define SKIP_UNDER_SANITIZERS() GTEST_SKIP() << "the sanitizers add libraries, symbols and code of their own"
#else
#define SKIP_UNDER_SANITIZERS() static_assert(true)
#endif

std::string difference(const std::set<std::string>& a, const std::set<std::string>& b) {
  std::string text;
  for (const std::string& name : a) {
    if (!b.contains(name)) text += " " + name;
  }
  return text;
}

// What the public headers declare: functions and data, after preprocessing.
std::set<std::string> declared_names() {
  const auto text = joined(lines_of(QOR_COMPILER " -E -P -I" QOR_INCLUDE " -x c " QOR_INCLUDE "/qor/qor.h"));
  std::set<std::string> names;
  std::string statement;
  int depth = 0;
  for (const char c : text) {
    if (c == '{') ++depth;
    if (c == '}') --depth;
    if (c != ';' || depth > 0) {
      statement += c == '\n' ? ' ' : c;
      continue;
    }
    std::smatch match;
    if (!std::regex_search(statement, std::regex("^ *(__extension__ +)?typedef ")) &&
        std::regex_search(statement, match, std::regex("([A-Za-z_][A-Za-z0-9_]*) *(\\(|\\[|$)"))) {
      names.insert(match[1]);
    }
    statement.clear();
  }
  return names;
}

TEST(SharedObject, ExportsTheListAndTheHeadersDeclareIt) {
  const binary::Exports exports = binary::exports_of(library);
  std::set<std::string> exported = exports.functions;
  exported.insert(exports.data.begin(), exports.data.end());
  const std::set<std::string> listed = binary::names_in_map(QOR_EXPORTS_MAP), declared = declared_names();
  ASSERT_GT(exported.size(), 50u);
  EXPECT_EQ(difference(exported, listed), "") << "exported and not listed";
  EXPECT_EQ(difference(listed, exported), "") << "listed and not exported";
  EXPECT_EQ(difference(exported, declared), "") << "exported and in no header";
  EXPECT_EQ(difference(declared, exported), "") << "in a header and not exported";
}

TEST(SharedObject, NeedsTheSystemLibrariesAloneAndHasItsName) {
  SKIP_UNDER_SANITIZERS();
  const auto dynamic = lines_of("readelf -dW " + library);
  for (const std::string& needed : all_matches(dynamic, "\\(NEEDED\\).*\\[(.*)\\]")) {
    EXPECT_TRUE(needed == "libc.so.6" || needed == "libm.so.6" || needed == "libpthread.so.0" ||
                needed == "ld-linux.so.2" || needed == "libgomp.so.1")
        << needed;
  }
  EXPECT_EQ(all_matches(dynamic, "\\(SONAME\\).*\\[(.*)\\]"), std::vector<std::string>{"libqor_zx9.so.1"});
}

TEST(SharedObject, IsHardened) {
  const auto dynamic = lines_of("readelf -dW " + library), segments = lines_of("readelf -lW " + library);
  ASSERT_FALSE(dynamic.empty());
  EXPECT_TRUE(all_matches(dynamic, "TEXTREL").empty()) << joined(dynamic);
  EXPECT_FALSE(all_matches(dynamic, "BIND_NOW|Flags:.*NOW").empty()) << joined(dynamic);
  EXPECT_EQ(all_matches(segments, "GNU_RELRO").size(), 1u) << joined(segments);
  EXPECT_EQ(all_matches(segments, "GNU_STACK.* (R[ W][ E]) "), std::vector<std::string>{"RW "}) << joined(segments);
  EXPECT_TRUE(all_matches(segments, "LOAD.* (RWE) ").empty()) << joined(segments);
  const auto notes = lines_of("readelf -nW " + library);
  EXPECT_TRUE(all_matches(notes, "IBT|SHSTK").empty()) << joined(notes);
}

// Function, mnemonic and operands of every instruction.
struct Instruction {
  std::string function, mnemonic, operands;
};
std::vector<Instruction> disassembly() {
  std::vector<Instruction> code;
  std::string function;
  for (const std::string& line : lines_of("objdump -d -C --no-show-raw-insn " + library)) {
    if (line.ends_with(">:")) {
      function = line.substr(line.find('<') + 1);
      function.resize(function.size() - 2);
      continue;
    }
    const std::size_t tab = line.find('\t');
    if (tab == std::string::npos) continue;
    std::istringstream words(line.substr(tab + 1));
    Instruction instruction{function, {}, {}};
    do {
      words >> instruction.mnemonic;
    } while (instruction.mnemonic.starts_with("rep") || instruction.mnemonic == "lock" ||
             instruction.mnemonic == "notrack");
    std::getline(words, instruction.operands);
    code.push_back(instruction);
  }
  return code;
}

TEST(SharedObject, UsesNoInstructionBeyondItsProcessor) {
  SKIP_UNDER_SANITIZERS();
  // SSE4, its string and bit instructions, and the later sets; AVX and FMA start with a v.
  const std::regex beyond(
      "v(?!err|erw).*|blendv?p[sd]|dpp[sd]|extractps|insertps|movntdqa|mpsadbw|packusdw|pblendv?[bw]|pcmpeqq|pextr[bdq]"
      "|"
      "pinsr[bdq]|phminposuw|p(max|min)(sb|sd|ud|uw)|pmov[sz]x.*|pmuldq|pmulld|ptest|round[ps][sd]|pcmp[ei]str[im]|"
      "pcmpgtq|crc32.*|popcnt|[lt]zcnt|andn|bextr|bls[ir]|blsmsk|bzhi|pdep|pext|mulx|rorx|sarx|shlx|shrx|aes.*|"
      "pclmul.*|sha(1|256).*|movbe|f?xsave.*|rdrand|rdseed|femms");
  const auto code = disassembly();
  ASSERT_GT(code.size(), 5000u);
  std::set<std::string> offences;
  for (const Instruction& i : code) {
    const bool mmx = i.operands.find("%mm") != std::string::npos || i.mnemonic == "emms";
    if (mmx || std::regex_match(i.mnemonic, beyond)) offences.insert(i.function + ": " + i.mnemonic + i.operands);
  }
  EXPECT_TRUE(offences.empty()) << joined({offences.begin(), offences.end()});
}

// What runs before a caller knows whether the processor will do: the loader's initialisation, and the question itself.
TEST(SharedObject, AsksTheProcessorByPlainInstructions) {
  SKIP_UNDER_SANITIZERS();
  EXPECT_EQ(
      all_matches(lines_of("readelf -SW " + library), " \\.init_array +INIT_ARRAY +[0-9a-f]+ [0-9a-f]+ ([0-9a-f]+)"),
      std::vector<std::string>{"000004"})
      << "the compiler's own initialisation is one function";
  int seen = 0;
  for (const Instruction& i : disassembly()) {
    if (i.function != "qor_cpu_supported" && i.function != "qor_version") continue;
    seen += i.mnemonic == "cpuid";
    EXPECT_EQ(i.operands.find("%xmm"), std::string::npos) << i.mnemonic << i.operands;
    EXPECT_FALSE(i.mnemonic.starts_with("cmov")) << i.mnemonic << i.operands;
  }
  EXPECT_GE(seen, 1);
}

TEST(SharedObject, UsesX87OnlyWhereItIsMeantTo) {
  SKIP_UNDER_SANITIZERS();
  struct Allowed {
    std::string function;  // a part of its name
    std::set<std::string> mnemonics;
  };
  const Allowed list[] = {
      {"qor::tfn::set_mode(", {"fldcw", "fnstcw"}},
      {"qor::fft::Roots::",
       {"fldcw", "fnstcw", "fadd",  "faddp",  "fsub",  "fsubp",  "fsubr",   "fsubrp", "fmul",  "fmulp",
        "fdivp", "fdivrp", "fildl", "fildll", "fld",   "fldt",   "flds",    "fldl",   "fstps", "fstpl",
        "fstpt", "fstp",   "fxch",  "fchs",   "fadds", "fdivrs", "fcmovne", "fcmove"}},
      {"qor::fft::fill_roots<", {"fldl", "faddl", "fsincos", "fstpl", "fldcw", "fnstcw"}},
      {"qor::numeric::x87_ln(", {"fldl", "fldln2", "fnsave", "fnstsw", "frstor", "fstpl", "fyl2x"}},
      {"_tfndPackM", {"fldl", "fstpl"}},
      {"_tfndUnpackM", {"fldl", "fstpl"}},
      {"qor::tfn::sin_element<", {"fldl", "faddl", "fsincos", "fstpl", "fldcw", "fnstcw"}},
      {"qor::tfn::cos_element<", {"fldl", "faddl", "fsincos", "fstpl", "fldcw", "fnstcw"}},
      {"qor::tfn::sincos_element<", {"fldl", "faddl", "fsincos", "fstpl", "fldcw", "fnstcw"}},
      {"qor::tfn::tan_element<", {"fldl", "faddl", "fptan", "fdiv", "fstpl", "fstp", "fldcw", "fnstcw"}},
  };
  std::map<std::string, std::set<std::string>> used;
  for (const Instruction& i : disassembly()) {
    if (i.mnemonic.starts_with("f") || i.operands.find("%st") != std::string::npos) used[i.function].insert(i.mnemonic);
  }
  EXPECT_GE(used.size(), 2u) << "the disassembly shows less than the library is known to hold";
  for (const auto& [function, mnemonics] : used) {
    std::string words;
    std::set<std::string> excess = mnemonics;
    for (const std::string& mnemonic : mnemonics) words += " " + mnemonic;
    for (const Allowed& allowed : list) {
      if (function.find(allowed.function) == std::string::npos) continue;
      for (const std::string& mnemonic : allowed.mnemonics) excess.erase(mnemonic);
    }
    std::printf("x87 in %s:%s\n", function.c_str(), words.c_str());
    EXPECT_EQ(difference(excess, {}), "") << "in " << function;
  }
}

}  // namespace
