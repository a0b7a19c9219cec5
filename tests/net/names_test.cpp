#include <gtest/gtest.h>

#include "net/names.h"

namespace ravelo {
namespace {

TEST(LegalNames, LengthLimitIsThirty) {
    std::string thirty(30, 'a'), thirty_one(31, 'a');
    EXPECT_TRUE(is_legal_name(thirty.c_str()));
    EXPECT_EQ(name_problem(thirty_one.c_str()),
              "'" + thirty_one + "...' is too long (31 characters, maximum is 30)");
    EXPECT_EQ(repaired_name(thirty_one), thirty);
}

TEST(LegalNames, FaultsInTheirOrder) {
    EXPECT_TRUE(is_legal_name("_a"));
    EXPECT_EQ(name_problem(nullptr), "is missing");
    EXPECT_EQ(name_problem(""), "is empty (contains no characters)");
    EXPECT_EQ(name_problem("1a"), "'1a' starts with non-alphabetic character '1'");
    EXPECT_EQ(name_problem("a b"), "'a b' contains a space");
    EXPECT_EQ(name_problem("a\tb"), "'a\tb' contains a tab");
    EXPECT_EQ(name_problem("a\rb"), "'a\rb' contains a 'return' character");
    EXPECT_EQ(name_problem("a\nb"), "'a\nb' contains a 'new-line' character");
    EXPECT_EQ(name_problem("a-b"), "'a-b' contains the illegal character '-'");
    EXPECT_EQ(name_problem("a\x01"), "'a\x01' contains an illegal character (ascii code 1)");
    // Characters are checked before the length, and the first 30 are shown.
    std::string long_spaced = "a b" + std::string(40, 'c');
    EXPECT_EQ(name_problem(long_spaced.c_str()), "'" + long_spaced.substr(0, 30) + "' contains a space");
    EXPECT_TRUE(name_problem("*", true).empty());
    EXPECT_FALSE(name_problem("*").empty());
}

TEST(LegalNames, RepairMode) {
    EXPECT_EQ(repaired_name("1a"), "xa");
    EXPECT_EQ(repaired_name("a b"), "a_b");
    NameCheck c = check_name("a b", true);
    EXPECT_EQ(c.problem, "'a b' contains a space");
    EXPECT_EQ(c.name, "a_b");
    EXPECT_EQ(check_name("ok", true).problem, "");
}

TEST(LegalNames, WideText) {
    EXPECT_EQ(wide_name_problem(u"ab\u00e9"), "contains a non-ascii character (3rd char is Unicode-x00E9)");
    std::u16string long_name(31, u'a');
    EXPECT_EQ(wide_name_problem(long_name.c_str()), "is too long (31 characters, maximum is 30)");
    EXPECT_EQ(wide_name_problem(u"a b"), "'a b' contains a space");
    EXPECT_EQ(wide_name_problem(u"ok"), "");
}

TEST(LegalNames, Ordinals) {
    EXPECT_EQ(ordinal(1), "1st");
    EXPECT_EQ(ordinal(2), "2nd");
    EXPECT_EQ(ordinal(11), "11th");
    EXPECT_EQ(ordinal(23), "23rd");
}

}  // namespace
}  // namespace ravelo
