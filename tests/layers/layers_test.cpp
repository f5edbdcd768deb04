// SPDX-License-Identifier: MIT

// Who may use whom, as docs/architecture.md says.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

namespace {

namespace fs = std::filesystem;

using Arrows = std::map<std::string, std::set<std::string>>;

// Rooms that may use everything, and that nothing else may use.
const std::set<std::string> kOutside{"tests", "bench", "fuzz", "examples"};

std::string trimmed(std::string text, const char* left_out) {
  text.erase(0, std::min(text.find_first_not_of(left_out), text.size()));
  text.erase(text.find_last_not_of(left_out) + 1);
  return text;
}

// The table "| `folder/` | what | may use |".
Arrows allowedArrows() {
  Arrows arrows;
  std::ifstream file("docs/architecture.md");
  std::string line;
  while (std::getline(file, line)) {
    if (!line.starts_with("| `") || line.find("/` |") == std::string::npos) continue;
    const std::string room = line.substr(3, line.find('/') - 3);
    const auto last = line.rfind('|', line.size() - 2);
    std::istringstream names(line.substr(last + 1, line.rfind('|') - last - 1));
    auto& users = arrows[room];
    for (std::string name; std::getline(names, name, ',');) {
      name = trimmed(name, " ");
      if (name != "nothing") users.insert(name);
    }
  }
  return arrows;
}

std::string roomOf(const std::string& path) {
  return path.substr(0, path.find('/'));
}

bool isSource(const fs::path& path) {
  const auto extension = path.extension();
  return extension == ".h" || extension == ".cpp" || extension == ".in";
}

// "user -> used (file)" of each include of another room that `allowed` lacks.
std::vector<std::string> forbiddenIncludes(const std::string& room, const Arrows& allowed) {
  std::vector<std::string> found;
  for (const auto& entry : fs::recursive_directory_iterator(room)) {
    if (!entry.is_regular_file() || !isSource(entry.path())) continue;
    std::ifstream file(entry.path());
    for (std::string line; std::getline(file, line);) {
      constexpr std::string_view kInclude = "#include \"";
      if (!line.starts_with(kInclude)) continue;
      const std::string path = line.substr(kInclude.size(), line.rfind('"') - kInclude.size());
      if (path.find('/') == std::string::npos) continue;  // the platform's or a host's
      const std::string used = roomOf(path);
      if (used == room || allowed.at(room).contains(used)) continue;
      found.push_back(room + " -> " + used + " (" + entry.path().generic_string() + ")");
    }
  }
  return found;
}

// Whether `to` can be reached from `from`.
bool reaches(const Arrows& arrows, const std::string& from, const std::string& to,
             std::set<std::string>& seen) {
  if (!seen.insert(from).second || !arrows.contains(from)) return false;
  const auto& next = arrows.at(from);
  return next.contains(to) || std::any_of(next.begin(), next.end(), [&](const auto& room) {
           return reaches(arrows, room, to, seen);
         });
}

TEST(Layers, AreTheTableOfTheArchitecture) {
  const Arrows allowed = allowedArrows();
  ASSERT_GT(allowed.size(), 20U) << "the table is there";
  for (const auto& [room, users] : allowed) {
    EXPECT_TRUE(fs::is_directory(room)) << room;
    EXPECT_THAT(forbiddenIncludes(room, allowed), testing::IsEmpty());
    for (const auto& used : users) EXPECT_TRUE(allowed.contains(used)) << room << " -> " << used;
  }
}

TEST(Layers, HaveNoCycle) {
  const Arrows allowed = allowedArrows();
  for (const auto& [room, users] : allowed) {
    std::set<std::string> seen;
    EXPECT_FALSE(reaches(allowed, room, room, seen)) << room;
  }
}

TEST(Layers, LeaveNoFolderOut) {
  const Arrows allowed = allowedArrows();
  for (const auto& entry : fs::directory_iterator(".")) {
    const std::string name = entry.path().filename().string();
    if (!entry.is_directory() || name == "build" || kOutside.contains(name)) continue;
    bool hasSource = false;
    for (const auto& inner : fs::recursive_directory_iterator(entry)) {
      hasSource = hasSource || isSource(inner.path());
    }
    EXPECT_TRUE(!hasSource || allowed.contains(name)) << name << " has no row";
  }
}

}  // namespace
