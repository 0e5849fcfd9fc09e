// Texts of the environment, which may be no text at all.
#include <gtest/gtest.h>

#include "platform/system.h"
#include "support/environment.h"

namespace zant::test {
namespace {

// fault: a character that is cut off at the end takes what lies behind the variable for its rest.
TEST(Environment, ACutCharacterEndsWithItsVariable) {
    for (const char* cut : {"w\xC3", "w\xE2\x82", "w\xF0\x9F\x98"}) {
        const ScopedVariable variable("ZELMAR_TEST_TEXT", cut);
        const std::wstring text = system::environmentVariable(L"ZELMAR_TEST_TEXT").value();
        EXPECT_EQ(text[0], L'w');
        EXPECT_EQ(text.find_first_not_of(wchar_t{0xFFFD}, 1), std::wstring::npos) << cut;
    }
}

}  // namespace
}  // namespace zant::test
