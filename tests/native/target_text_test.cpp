// Reading a target's text: which property wins, and what the log shows of it.
#include "tests/native/fixture.h"

namespace tests {
namespace {

struct Property {
  const char* name;
  PROPERTYID id;
};

constexpr Property kProperties[] = {{"UIA_ValueValuePropertyId", 30045},
                                    {"UIA_NamePropertyId", 30005},
                                    {"UIA_LegacyIAccessibleValuePropertyId", 30093},
                                    {"UIA_LegacyIAccessibleNamePropertyId", 30092},
                                    {"UIA_LegacyIAccessibleDescriptionPropertyId", 30094}};

class TargetTextTest : public FieldTest {
 protected:
  void SetUp() override {
    FieldTest::SetUp();
    for (const Property& property : kProperties) {
      TheDesktop().Elements().SetProperty(field_, property.id, u"");
    }
  }

  std::optional<standin::Text> Read(const TargetRecord* target, HWND window) {
    KorvaneChar* text = getTargetText(target, window);
    if (text == nullptr) {
      return std::nullopt;
    }
    const standin::Text copy(text);
    freeTextResult(text);
    return copy;
  }
};

// Every way in which a property can hold no text, before each of the properties in turn.
TEST_F(TargetTextTest, FirstPropertyWithATextWins) {
  auto& desktop = TheDesktop();
  const std::pair<const char*, std::function<void(PROPERTYID)>> absences[] = {
      {"empty", [&](PROPERTYID id) { desktop.Elements().SetProperty(field_, id, u""); }},
      {"null string", [&](PROPERTYID id) { desktop.Elements().SetNullString(field_, id); }},
      {"unsupported", [&](PROPERTYID id) { desktop.Elements().SetUnsupported(field_, id); }},
      {"failing", [&](PROPERTYID id) { desktop.Elements().FailProperty(field_, id); }},
  };
  for (const auto& [what, makeAbsent] : absences) {
    for (std::size_t winner = 0; winner <= std::size(kProperties); ++winner) {
      SCOPED_TRACE(std::string(what) + ", " + std::to_string(winner));
      for (std::size_t i = 0; i < std::size(kProperties); ++i) {
        if (i < winner) {
          makeAbsent(kProperties[i].id);
        } else {
          desktop.Elements().SetProperty(field_, kProperties[i].id,
                                         u"text " + standin::Text(1, static_cast<char16_t>('0' + i)));
        }
      }
      const auto before = desktop.Calls().Count("IUIAutomationElement::GetCurrentPropertyValue");
      const auto text = Read(&target_, window_);
      const auto reads = desktop.Calls().Count("IUIAutomationElement::GetCurrentPropertyValue") - before;
      if (winner == std::size(kProperties)) {
        EXPECT_EQ(text, std::nullopt);
        EXPECT_EQ(reads, 5U);
        EXPECT_EQ(Log(), kFoundById + Lines{"getTargetText: FAILED - No text found in any property"});
        continue;
      }
      const std::string digit = std::to_string(winner);
      EXPECT_EQ(text, u"text " + standin::Text(digit.begin(), digit.end()));
      EXPECT_EQ(reads, winner + 1);
      EXPECT_EQ(Log(), kFoundById + Lines{std::string("getTargetText: SUCCESS with ") + kProperties[winner].name +
                                          " - Text: text " + digit});
    }
  }
}

TEST_F(TargetTextTest, PreviewEndsAfterFiftyUnitsTheTextDoesNot) {
  const standin::Text fifty = standin::Text(48, u'x') + u"\u00E9\xD83D";
  struct Case {
    standin::Text text;
    std::string shown;
  };
  const std::string shown = std::string(48, 'x') + "\xE9\\ud83d";
  for (const auto& [text, preview] : {Case{fifty, shown}, Case{fifty + u"\xDE00", shown + "..."},
                                      Case{fifty + standin::Text(70000, u'y'), shown + "..."}}) {
    TheDesktop().Elements().SetProperty(field_, UIA_ValueValuePropertyId, text);
    EXPECT_EQ(Read(&target_, window_), text);
    EXPECT_EQ(Log().back(), "getTargetText: SUCCESS with UIA_ValueValuePropertyId - Text: " + preview);
  }
}

TEST_F(TargetTextTest, NothingToReadFrom) {
  EXPECT_EQ(Read(nullptr, window_), std::nullopt);
  EXPECT_EQ(Log(), (Lines{"[getTargetText] ERROR: target is null"}));

  EXPECT_EQ(Read(&target_, nullptr), std::nullopt);
  EXPECT_EQ(Log(),
            (Lines{"[FindTargetElement] ERROR: Invalid parameters", "getTargetText: FAILED - No element found"}));

  const TargetRecord nobody = EmptyRecord();
  EXPECT_EQ(Read(&nobody, window_), std::nullopt);
  EXPECT_EQ(Log(), (Lines{"[FindTargetElement] Starting with identification method: -1",
                          "[FindTargetElement] FAILED: All identification methods failed",
                          "getTargetText: FAILED - No element found"}));

  TheDesktop().Controls().SetText(edit_, u"text");
  cleanupAutomation();
  OpenLog();
  EXPECT_EQ(Read(&target_, window_), std::nullopt) << "no context is created for a read";
  EXPECT_EQ(Log().back(), "getTargetText: FAILED - No element found");
  EXPECT_EQ(TheDesktop().Calls().Count("CoCreateInstance"), 1U);
  freeTextResult(nullptr);
}

}  // namespace
}  // namespace tests
