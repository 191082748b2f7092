#include <gtest/gtest.h>

#include <cstdio>

#include "helpers/temp_dir.h"
#include "zephyr/runtime/popup_class.h"

namespace zephyr {
namespace {

using testing::ReadBytes;
using testing::TempDir;
using testing::WriteBytes;

using Texts = std::vector<std::string>;

// A loaded design in one list: the title, "question/index" for each level and
// "name length @start #initial index" for each field.
Texts Design(PopupClass& popup) {
  Texts design{popup.Title()};
  for (const auto& level : *popup.PopupLevels()) {
    design.push_back(level->Question().ToText() + "/" + std::to_string(level->IntialIndex()));
  }
  for (const auto& field : *popup.PopupFields()) {
    design.push_back(field->Name() + " " + std::to_string(field->FieldLength()) + " @" +
                     std::to_string(field->StartCharPos()) + " #" +
                     std::to_string(field->InitialIndex()));
  }
  return design;
}

struct FieldSpec {
  std::string name;
  int16_t length;
};

class PopupTemplateTest : public ::testing::Test {
 protected:
  // A popup named "P" in the temporary folder with the given design.
  std::unique_ptr<PopupClass> MakePopup(const std::string& title,
                                        const std::vector<std::string>& questions,
                                        const std::vector<FieldSpec>& fields) {
    auto popup = std::make_unique<PopupClass>();
    popup->PopupPath(dir_.Path());
    popup->DataSource("P");
    popup->Title(title);
    int32_t i = 1;
    for (const auto& question : questions) popup->PopupLevels()->Add(Variant(question), i++);
    popup->PopupFields()->Add("Popup Code", static_cast<int16_t>(2 * questions.size()), 0, 0);
    i = 1;
    for (const auto& field : fields) {
      popup->PopupFields()->Add(field.name, field.length, static_cast<int16_t>(i++), 99);
    }
    return popup;
  }

  // Writes the popup's template and puts the work file in the template's place.
  std::string WriteAndInstall(PopupClass& popup) {
    popup.WriteTemplate();
    std::string bytes = ReadBytes(dir_.File("P.bpt"));
    std::rename(dir_.File("P.bpt").c_str(), dir_.File("P.ZPT").c_str());
    return bytes;
  }

  std::unique_ptr<PopupClass> Load() {
    auto popup = std::make_unique<PopupClass>();
    popup->PopupPath(dir_.Path());
    popup->DataSource("P");
    popup->LoadTemplate();
    return popup;
  }

  // Loads the template P.ZPT and returns the error it raises.
  RuntimeError LoadFailure() {
    PopupClass popup;
    popup.PopupPath(dir_.Path());
    popup.DataSource("P");
    try {
      popup.LoadTemplate();
    } catch (const RuntimeError& error) {
      return error;
    }
    ADD_FAILURE() << "the template loaded";
    return RuntimeError(RuntimeErrorCode::kInvalidArgument);
  }

  TempDir dir_;
};

// Start positions are computed from the lengths; a stale work file is replaced.
TEST_F(PopupTemplateTest, WritesTheExactBytesAndReadsThemBack) {
  WriteBytes(dir_.File("P.bpt"), std::string(500, 'x'));
  auto popup = MakePopup("T", {"A", "B", "C"}, {{"One", 10}, {"Two", 3}, {"Three", 1}});
  EXPECT_EQ(WriteAndInstall(*popup),
            "\"T\"\r\n3\r\n2,\"A\"\r\n2,\"B\"\r\n2,\"C\"\r\n3\r\n"
            "7,10,\"One\"\r\n17,3,\"Two\"\r\n20,1,\"Three\"\r\n");
  EXPECT_EQ(Design(*Load()), (Texts{"T", "A/1", "B/2", "C/3", "Popup Code 6 @0 #0", "One 10 @7 #1",
                                    "Two 3 @17 #2", "Three 1 @20 #3"}));

  auto codes = MakePopup("Codes", {"Code"}, {});  // no companions: only the key field
  EXPECT_EQ(WriteAndInstall(*codes), "\"Codes\"\r\n1\r\n2,\"Code\"\r\n0\r\n");
  EXPECT_EQ(Design(*Load()), (Texts{"Codes", "Code/1", "Popup Code 2 @0 #0"}));
}

TEST_F(PopupTemplateTest, ReadingFollowsTheLineSeparators) {
  WriteAndInstall(*MakePopup("Fruit, Veg", {"Kind"}, {}));
  EXPECT_EQ(Load()->Title(), "\"Fruit");  // a comma in a title cuts it on the next load

  // Tab-separated lines keep their commas.
  WriteBytes(
      dir_.File("P.ZPT"),
      "\"Sizes, colours\"\t\r\n1\r\n2\t\"Size, then colour\"\r\n1\r\n3\t8\t\"Name, short\"\r\n");
  EXPECT_EQ(Design(*Load()), (Texts{"Sizes, colours", "Size, then colour/1",
                                    "Popup Code 2 @0 #0", "Name, short 8 @3 #1"}));

  WriteBytes(dir_.File("P.ZPT"), "\"T\"\r\n1\r\n2,\"A\"\r\n0");  // a last line without its end
  EXPECT_EQ(Load()->PopupLevels()->Count(), 1);
}

TEST_F(PopupTemplateTest, TextIsStoredInTheCodePage) {
  auto popup = MakePopup("Café €", {"Größe"}, {{"Naïve ł", 5}});
  EXPECT_EQ(WriteAndInstall(*popup),  // no "ł" in Windows-1252
            "\"Caf\xE9 \x80\"\r\n1\r\n2,\"Gr\xF6\xDF\x65\"\r\n1\r\n3,5,\"Na\xEFve ?\"\r\n");
  EXPECT_EQ(Design(*Load()), (Texts{"Café €", "Größe/1", "Popup Code 2 @0 #0", "Naïve ? 5 @3 #1"}));
}

TEST_F(PopupTemplateTest, MalformedTemplatesFailWithTheLineThatFailed) {
  const struct {
    const char* bytes;
    int number;
    const char* line;
  } cases[] = {
      {"\"T\"\r\n3\r\n2,\"A\"\r\n2,\"B\"\r\n", 9, "before line 5"},
      {"\"T\"\r\nthree\r\n", 13, "line 2 of template"},
      {"\"T\"\r\n1\r\n2,\"A\"\r\n99999\r\n", 6, "line 4"},
      {"\"T\"\r\n1\r\n\"A\"\r\n0\r\n", 9, "line 3"},
      {"", 9, "line 1"},
      {"\"T\"\n1\n2,\"A\"\n0\n", 9, "line 2"},  // lines end in CR LF only
  };
  for (const auto& c : cases) {
    WriteBytes(dir_.File("P.ZPT"), c.bytes);
    RuntimeError error = LoadFailure();
    EXPECT_EQ(error.Number(), c.number) << c.bytes;
    EXPECT_NE(error.Description().find(c.line), std::string::npos) << error.Description();
    EXPECT_NE(error.Description().find("P.ZPT"), std::string::npos) << error.Description();
  }
  std::remove(dir_.File("P.ZPT").c_str());  // a missing template is an invalid argument
  RuntimeError missing = LoadFailure();
  EXPECT_EQ(missing.Number(), 5);
  EXPECT_NE(missing.Description().find(dir_.File("P.ZPT")), std::string::npos);
}

}  // namespace
}  // namespace zephyr
