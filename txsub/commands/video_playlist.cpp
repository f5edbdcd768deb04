// SPDX-License-Identifier: MIT

#include "txsub/commands/video_playlist.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string_view>

#include "util/utf8_path.h"

namespace korr::txsub {

namespace {

namespace fs = std::filesystem;

// RFC 3986, 2.1: what a path may hold and a URI may not.
std::string asUri(const fs::path& path) {
  constexpr std::string_view kPlain = "-._~/!$&'()*+,;=@";
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string uri;
  for (const char c : utf8FromPath(path)) {
    const auto byte = static_cast<unsigned char>(c == '\\' ? '/' : c);
    const bool isLetter = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
    if (isLetter || (byte >= '0' && byte <= '9') || kPlain.find(c) != kPlain.npos) {
      uri += static_cast<char>(byte);
    } else {
      uri += '%';
      uri += kDigits[byte >> 4];
      uri += kDigits[byte & 0xF];
    }
  }
  return uri;
}

}  // namespace

std::optional<VideoPlaylist> readVideoPlaylist(const std::string& path,
                                               const std::string& directory,
                                               std::optional<std::uint64_t> bandwidth) {
  constexpr std::uint64_t kUsualBandwidth = 5'000'000;
  std::ifstream file(pathFromUtf8(path), std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  if (!file || !content.str().starts_with("#EXTM3U")) return {};
  std::error_code error;
  const fs::path relative = fs::relative(pathFromUtf8(path), pathFromUtf8(directory), error);
  if (error || relative.empty()) return {};
  const fs::path folder = relative.parent_path();
  return VideoPlaylist{.text = content.str(),
                       .uri = asUri(relative),
                       .prefix = folder.empty() ? "" : asUri(folder) + '/',
                       .bandwidth = bandwidth.value_or(kUsualBandwidth)};
}

}  // namespace korr::txsub
