// SPDX-License-Identifier: MIT

// Text templates that name variables as ${name}.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <variant>

namespace korr::util::inline v2_1 {

using VariableNames = std::set<std::string, std::less<>>;

/// Why a variable has no value, in words for the person who typed its name.
struct LookupError {
  std::string message;
};

/// A variable's value, or why there is none.
using LookupResult = std::variant<std::string, LookupError>;

/// Where the values come from.
class IVariables {
 public:
  virtual LookupResult lookup(std::string_view name) const = 0;

  /// The names that a template must hold at least once.
  virtual VariableNames requiredNames() const = 0;

  virtual ~IVariables() = default;
};

/// Variables from a map; none is required.
class MapVariables final : public IVariables {
 public:
  using Values = std::map<std::string, std::string, std::less<>>;

  explicit MapVariables(Values values) : values_(std::move(values)) {}

  LookupResult lookup(std::string_view name) const override;
  VariableNames requiredNames() const override { return {}; }

 private:
  Values values_;
};

/// The variables of one subtitle service among several: `feedIndex`, `serviceName` and
/// `customName`. An empty value shows as "N/A". `feedIndex` alone tells any two services apart, so
/// it is required.
class MosaicVariables final : public IVariables {
 public:
  MosaicVariables(std::string feedIndex, std::string serviceName, std::string customName);

  LookupResult lookup(std::string_view name) const override { return values_.lookup(name); }
  VariableNames requiredNames() const override;

 private:
  MapVariables values_;
};

/// What is wrong with a template, in words for the person who typed it.
struct ExpansionError {
  std::string message;
  std::size_t offset = 0;  ///< byte of the template at which the error was seen; may be its length
};

/// The expanded text, or the first error.
using ExpansionResult = std::variant<std::string, ExpansionError>;

/// Fills `text`: ${name} gives the variable's value; \\ \$ \{ \} give the character itself, \t \n
/// \r a tab, a line feed, a carriage return. Values are not expanded again. Any bytes are taken;
/// throws nothing but std::bad_alloc.
ExpansionResult expandVariables(std::string_view text, const IVariables& variables);

}  // namespace korr::util::inline v2_1
