// SPDX-License-Identifier: MIT

// How many services of 10 Mbit/s a core streams, and how soon a segment is there on a pipe in real
// time: stream_speed TXSUB
#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "bench/made_programme.h"
#include "testkit/temporary_directory.h"
#include "tests/streaming/checked_store.h"

namespace korr::bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kPacket = 188;
constexpr MadeProgramme::Settings kTenMegabits{.picturesPerSecond = 25, .pictureBytes = 48'000};

pid_t start(const char* program, const std::string& input, const std::string& output, int pipe) {
  const pid_t child = ::fork();
  if (child != 0) return child;
  if (pipe >= 0) ::dup2(pipe, STDIN_FILENO);
  ::execl(program, program, "stream", input.c_str(), "-o", output.c_str(), "--segment", "4",
          "--window", "20", "--quiet", nullptr);
  ::_exit(127);
}

void measureProcessor(const char* program) {
  constexpr unsigned kSeconds = 120;
  const test_support::TemporaryDirectory scratch;
  const std::string input = scratch.file("programme.ts");
  MadeProgramme programme(kTenMegabits);
  std::size_t bytes = 0;
  {
    std::ofstream file(input, std::ios::binary);
    for (unsigned i = 0; i < kSeconds; ++i) {
      const auto second = programme.second();
      bytes += second.size();
      file.write(reinterpret_cast<const char*>(second.data()),
                 static_cast<std::streamsize>(second.size()));
    }
  }
  const pid_t child = start(program, input, scratch.file("out"), -1);
  int status = 0;
  rusage usage{};
  ::wait4(child, &status, 0, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  const double used = seconds(usage.ru_utime) + seconds(usage.ru_stime);
  std::printf("%.1f Mbit/s: %.3f s of a core for %u s: %.0f services a core; %.1f MB of memory\n",
              static_cast<double>(bytes) * 8 / 1e6 / kSeconds, used, kSeconds, kSeconds / used,
              static_cast<double>(usage.ru_maxrss) / 1024);
}

std::uint64_t pcrOf(const std::uint8_t* packet) {
  std::uint64_t base = 0;
  for (int i = 6; i < 10; ++i) base = base << 8 | packet[i];
  return base << 1 | packet[10] >> 7;
}

bool hasPcr(const std::uint8_t* packet) {
  return (packet[3] & 0x20) != 0 && packet[4] > 0 && (packet[5] & 0x10) != 0;
}

void sendAll(int pipe, const std::uint8_t* bytes, std::size_t size) {
  while (size > 0) {
    const auto count = ::write(pipe, bytes, size);
    if (count <= 0) return;
    bytes += count;
    size -= static_cast<std::size_t>(count);
  }
}

/// The end of the last segment, as a stamp; 0 when there is none yet.
std::uint64_t publishedUpTo(const std::string& folder) {
  const auto read = [&](const std::string& name) {
    std::ifstream file(folder + '/' + name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  };
  const std::string text = read("webvtt.m3u8");
  if (text.empty()) return 0;
  const auto playlist = txsub::readPlaylist(text);
  unsigned long stamp = 0;
  const auto& last = playlist.entries.back();
  if (std::sscanf(read(last.uri).c_str(), "WEBVTT\nX-TIMESTAMP-MAP=MPEGTS:%lu", &stamp) != 1) {
    return 0;
  }
  return stamp + static_cast<std::uint64_t>(last.duration * MadeProgramme::kSecond + 0.5);
}

void measureLatency(const char* program) {
  constexpr unsigned kSeconds = 30;
  const test_support::TemporaryDirectory scratch;
  int pipe[2] = {};
  if (::pipe2(pipe, O_CLOEXEC) != 0) return;
  const pid_t child = start(program, "-", scratch.file("out"), pipe[0]);
  ::close(pipe[0]);

  MadeProgramme programme(kTenMegabits);
  const auto first = programme.second();
  const std::uint64_t firstPcr = pcrOf(first.data() + 2 * kPacket);  // behind the tables
  const auto began = Clock::now() + std::chrono::milliseconds(300);
  const auto timeOf = [&](std::uint64_t stamp) {
    return began + std::chrono::microseconds((stamp - firstPcr) * 100 / 9);
  };
  std::vector<double> latencies;
  std::jthread watcher([&](const std::stop_token& stop) {
    for (std::uint64_t known = 0; !stop.stop_requested();) {
      const std::uint64_t stamp = publishedUpTo(scratch.file("out/") + kMadeFolder);
      const auto now = Clock::now();
      if (stamp != known && known != 0) {
        latencies.push_back(std::chrono::duration<double, std::milli>(now - timeOf(stamp)).count());
      }
      known = stamp;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  });
  auto bytes = first;
  for (unsigned i = 0; i < kSeconds; ++i, bytes = programme.second()) {
    std::size_t sent = 0;
    for (std::size_t at = 0; at < bytes.size(); at += kPacket) {
      if (!hasPcr(bytes.data() + at)) continue;
      sendAll(pipe[1], bytes.data() + sent, at - sent);
      sent = at;
      std::this_thread::sleep_until(timeOf(pcrOf(bytes.data() + at)));
    }
    sendAll(pipe[1], bytes.data() + sent, bytes.size() - sent);
  }
  watcher.request_stop();
  watcher.join();
  ::close(pipe[1]);
  ::waitpid(child, nullptr, 0);
  std::ranges::sort(latencies);
  if (latencies.empty()) return;
  std::printf(
      "a segment is listed %.0f ms after its end has passed (median of %zu), %.0f at most\n",
      latencies[latencies.size() / 2], latencies.size(), latencies.back());
}

}  // namespace
}  // namespace korr::bench

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: stream_speed TXSUB\n");
    return 2;
  }
  ::signal(SIGPIPE, SIG_IGN);
  korr::bench::measureProcessor(argv[1]);
  korr::bench::measureLatency(argv[1]);
  return 0;
}
