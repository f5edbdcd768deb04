// SPDX-License-Identifier: MIT
#include "util/variable_expander.h"

#include <gmock/gmock.h>

namespace korr::util {
namespace {

// The expanded text, or "offset: message".
std::string expand(std::string_view text, const IVariables& variables) {
  const auto result = expandVariables(text, variables);
  if (const auto* error = std::get_if<ExpansionError>(&result))
    return std::to_string(error->offset) + ": " + error->message;
  return std::get<std::string>(result);
}

const MapVariables kMap({{"name", "BBC"}, {"a name", "$x{\\"}, {"empty", ""}});
const MosaicVariables kMosaic("3", "swe-teletext", "");

TEST(VariableExpander, FillsInValuesAsTheyStand) {
  EXPECT_EQ(expand("", kMap), "");
  EXPECT_EQ(expand("x ${name}${name}.vtt", kMap), "x BBCBBC.vtt");
  EXPECT_EQ(expand("${a name}|${empty}|", kMap), "$x{\\||");
}

TEST(VariableExpander, UndoesEscapes) {
  EXPECT_EQ(expand(R"(\\ \{ \} \$ \n\r\t\$\{name\})", kMap), "\\ { } $ \n\r\t${name}");
}

TEST(VariableExpander, TellsWhatIsWrongAndWhere) {
  EXPECT_EQ(expand("ab}", kMap), R"(2: unexpected character }; you might want \} instead.)");
  EXPECT_EQ(expand("{", kMap), R"(0: unexpected character {; you might want \{ instead.)");
  EXPECT_EQ(expand(R"(a\q)", kMap), R"(2: unknown escape sequence \q.)");
  EXPECT_EQ(expand("a\\\xC3\xB6z", kMap), "2: unknown escape sequence \\\xC3\xB6.") << "whole";
  EXPECT_EQ(expand("$n", kMap),
            R"(1: expecting opening brace { after $; you might want \$ instead.)");
  EXPECT_EQ(expand("$", kMap),
            R"(1: expecting opening brace { after $; you might want \$ instead.)");
  EXPECT_EQ(expand("${na${", kMap), "4: special character $ is forbidden in variable names.");
  EXPECT_EQ(expand("\\", kMap),
            R"(1: unfinished escape sequence (available: \\ \$ \{ \} \t \n \r).)");
  EXPECT_EQ(expand("${name", kMap), "6: unbalanced braces, you probably forgot a }.");
  EXPECT_EQ(expand("${}", kMap), "2: unknown variable ${} (available: a name, empty, name)");
}

TEST(VariableExpander, InsistsOnWhatTellsServicesApart) {
  EXPECT_EQ(expand("${serviceName}-${feedIndex}-${customName}", kMosaic), "swe-teletext-3-N/A");
  EXPECT_EQ(expand("${serviceName}", kMosaic), "14: ${feedIndex} must appear at least once.");
  EXPECT_EQ(expand("${page}", kMosaic),
            "6: unknown variable ${page} (available: customName, feedIndex, serviceName)");
}

}  // namespace
}  // namespace korr::util
