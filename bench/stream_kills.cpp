// SPDX-License-Identifier: MIT

// Kills `txsub stream` at random moments, starts it again, and holds what it leaves to the rules
// each time: stream_kills TXSUB [KILLS [SEED]]
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "bench/made_programme.h"
#include "testkit/temporary_directory.h"
#include "tests/streaming/checked_store.h"

namespace korr::bench {
namespace {

namespace fs = std::filesystem;
using txsub::CheckedStore;

constexpr unsigned kSeconds = 1800;
constexpr unsigned kLongestMicroseconds = 120'000;  // of a run

void writeProgramme(const std::string& path) {
  MadeProgramme programme({.picturesPerSecond = 10, .pictureBytes = 100});
  programme.hasSecondPage = true;
  std::ofstream file(path, std::ios::binary);
  for (unsigned i = 0; i < kSeconds; ++i) {
    const auto bytes = programme.second();
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
  }
}

/// Runs for a while, and is killed. False when it ended by itself.
bool runAndKill(const char* program, const std::string& input, const std::string& output,
                unsigned microseconds) {
  const pid_t child = ::fork();
  if (child == 0) {
    ::execl(program, program, "stream", input.c_str(), "-o", output.c_str(), "--segment", "3",
            "--window", "10", "--quiet", nullptr);
    ::_exit(127);
  }
  ::usleep(microseconds);
  ::kill(child, SIGKILL);
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
}

CheckedStore published(const std::string& directory) {
  CheckedStore store;
  std::error_code error;
  for (const auto& entry : fs::recursive_directory_iterator(directory, error)) {
    if (!entry.is_regular_file()) continue;
    std::ifstream file(entry.path(), std::ios::binary);
    store.files[fs::relative(entry.path(), directory).string()] =
        std::string(std::istreambuf_iterator<char>(file), {});
  }
  return store;
}

/// Whether the boxes of ISO/IEC 14496-12 fill the file.
bool areBoxesWhole(const std::string& file) {
  std::size_t at = 0;
  while (at + 8 <= file.size()) {
    std::size_t size = 0;
    for (std::size_t i = 0; i < 4; ++i) size = size << 8 | static_cast<unsigned char>(file[at + i]);
    if (size < 8) return false;
    at += size;
  }
  return at == file.size();
}

void checkFiles(CheckedStore& store) {
  store.checkAll();
  for (const auto& [name, content] : store.files) {
    const bool isTorn =
        (name.ends_with(".vtt") && !(content.starts_with("WEBVTT\n") && content.ends_with('\n'))) ||
        ((name.ends_with(".m4s") || name.ends_with(".mp4")) && !areBoxesWhole(content)) ||
        (name.ends_with(".mpd") && !content.ends_with("</MPD>\n"));
    if (isTorn) store.faults.push_back(name + " is torn");
  }
}

std::uint64_t lastNumber(const CheckedStore& store) {
  const auto list = store.files.find(std::string(kMadeFolder) + "/webvtt.m3u8");
  if (list == store.files.end()) return 0;
  const auto playlist = txsub::readPlaylist(list->second);
  return playlist.mediaSequence + playlist.entries.size();
}

int run(const char* program, unsigned kills, unsigned seed) {
  const test_support::TemporaryDirectory scratch;
  const std::string input = scratch.file("programme.ts");
  const std::string output = scratch.file("out");
  writeProgramme(input);
  std::mt19937 random(seed);
  std::uint64_t last = 0;
  unsigned killed = 0;
  for (unsigned i = 0; i < kills; ++i) {
    const auto length = static_cast<unsigned>(random() % kLongestMicroseconds);
    if (runAndKill(program, input, output, length)) ++killed;
    CheckedStore store = published(output);
    checkFiles(store);
    const std::uint64_t number = lastNumber(store);
    if (number < last) store.faults.push_back("numbers have gone back");
    last = number;
    for (const auto& fault : store.faults) std::printf("fault: kill %u: %s\n", i, fault.c_str());
    if (!store.faults.empty()) return 1;
  }
  std::printf("%u kills while running, %lu segments: no torn file, every playlist true\n", killed,
              static_cast<unsigned long>(last));
  return killed * 10 > kills * 9 && last > kills / 4 ? 0 : 1;
}

}  // namespace
}  // namespace korr::bench

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: stream_kills TXSUB [KILLS [SEED]]\n");
    return 2;
  }
  const auto kills = static_cast<unsigned>(argc > 2 ? std::atoi(argv[2]) : 200);
  const auto seed = static_cast<unsigned>(argc > 3 ? std::atoi(argv[3]) : 1);
  return korr::bench::run(argv[1], kills, seed);
}
