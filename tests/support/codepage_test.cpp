#include "zephyr/support/codepage.h"

#include <gtest/gtest.h>

#include "zephyr/support/errors.h"

namespace zephyr {
namespace {

TEST(CodePageTest, SingleByteCodePagesMapEveryByteBothWays) {
  CodePage cp("WINDOWS-1252");
  EXPECT_TRUE(cp.IsSingleByte());
  EXPECT_EQ(cp.ToUtf8("caf\xE9 \x80"), "café €");
  EXPECT_EQ(cp.FromUtf8("café €"), "caf\xE9 \x80");
  EXPECT_EQ(cp.FromUtf8("\u201Cq\u201D"), "\x93q\x94");
  std::string all;
  for (int b = 0; b < 256; ++b) all.push_back(static_cast<char>(b));
  EXPECT_EQ(cp.FromUtf8(cp.ToUtf8(all)), all);
  EXPECT_EQ(cp.ToUtf8("\x81"), "\u0081");      // undefined in Windows-1252
  EXPECT_EQ(cp.FromUtf8("ł日a"), "??a");       // characters it cannot hold
  EXPECT_EQ(cp.FromUtf8("a\xFF\xC3"), "a??");  // malformed UTF-8
  EXPECT_EQ(cp.CharacterCount("é€a"), 3u);
  EXPECT_EQ(cp.CharacterCount(""), 0u);
  CodePage central("CP1250");
  EXPECT_EQ(central.FromUtf8("ł"), "\xB3");
  EXPECT_EQ(central.ToUtf8("\xB3"), "ł");
}

TEST(CodePageTest, MultiByteCodePagesConvertThroughIconv) {
  CodePage japanese("CP932");
  EXPECT_FALSE(japanese.IsSingleByte());
  std::string bytes = japanese.FromUtf8("日本a");
  EXPECT_EQ(bytes.size(), 5u);
  EXPECT_EQ(japanese.ToUtf8(bytes), "日本a");
  EXPECT_EQ(japanese.FromUtf8("ał日"), "a?\x93\xFA");  // CP932 holds no "ł"
}

TEST(CodePageTest, TheActiveCodePageCanBeReplacedButNotByAnUnknownOne) {
  SetActiveCodePage("CP1250");
  EXPECT_EQ(ToCodePage("ł"), "\xB3");
  SetActiveCodePage("WINDOWS-1252");
  EXPECT_EQ(ToCodePage("ł"), "?");
  EXPECT_EQ(FromCodePage("\xE9"), "é");
  try {
    CodePage bogus("NO-SUCH-CODEPAGE");
    FAIL() << "expected an error";
  } catch (const RuntimeError& error) {
    EXPECT_EQ(error.Number(), 5);
    EXPECT_NE(error.Description().find("NO-SUCH-CODEPAGE"), std::string::npos);
  }
}

}  // namespace
}  // namespace zephyr
