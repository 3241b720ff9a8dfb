#include <hosts/orbimg/texts.h>

#include <cstdlib>
#include <optional>
#include <string>

#include <gtest/gtest.h>

namespace orb::test {
namespace {

// Sets a variable of the environment for one test.
class Variable {
 public:
  Variable(char const* initName, char const* value) : name(initName) {
    if (char const* old = std::getenv(name)) before = old;
    value != nullptr ? setenv(name, value, 1) : unsetenv(name);
  }
  Variable(Variable const&) = delete;
  Variable& operator=(Variable const&) = delete;
  ~Variable() { before ? setenv(name, before->c_str(), 1) : unsetenv(name); }

 private:
  char const* name;
  std::optional<std::string> before;
};

TEST(Texts, JapaneseUnderAJapaneseLocale) {
  Variable const all("LC_ALL", "");
  Variable const messages("LC_MESSAGES", nullptr);
  Variable const language("LANG", "ja_JP.UTF-8");
  EXPECT_EQ(host::StepText(6141, "Median"), "中央値コンポジット処理中...");
}

TEST(Texts, EnglishElsewhere) {
  Variable const all("LC_ALL", "C");
  Variable const language("LANG", "ja_JP.UTF-8");
  EXPECT_EQ(host::StepText(6141, "Median"), "Median");
}

TEST(Texts, OurOwnWordingWhereTheLibraryHasNone) {
  Variable const all("LC_ALL", "ja_JP.UTF-8");
  EXPECT_EQ(host::StepText(1, "Finding stars"), "Finding stars");
}

}  // namespace
}  // namespace orb::test
