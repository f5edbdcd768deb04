// SPDX-License-Identifier: MIT
#include "readers/network_address.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "util/exception.h"

namespace korr::txsub {

namespace {

constexpr std::array<NetworkProtocol, 6> kProtocols = {{
    {.scheme = "udp", .opens = "udp", .isDatagrams = true},
    {.scheme = "rtp", .opens = "udp", .isDatagrams = true, .isRtp = true},
    {.scheme = "srt", .opens = "srt"},
    {.scheme = "rist", .opens = "rist"},
    {.scheme = "http", .opens = "http,https,tcp,tls"},
    {.scheme = "https", .opens = "https,tcp,tls"},
}};

// RFC 3986, 3.1.
bool isScheme(std::string_view text) {
  const auto isLetter = [](unsigned char c) { return std::isalpha(c) != 0; };
  return !text.empty() && isLetter(static_cast<unsigned char>(text.front())) &&
         std::ranges::all_of(text, [&](char c) {
           const auto byte = static_cast<unsigned char>(c);
           return std::isalnum(byte) != 0 || c == '+' || c == '-' || c == '.';
         });
}

}  // namespace

const NetworkProtocol* networkProtocol(std::string_view path) {
  const auto colon = path.find("://");
  if (colon == path.npos || !isScheme(path.substr(0, colon))) return nullptr;
  const auto scheme = path.substr(0, colon);
  const auto found = std::ranges::find(kProtocols, scheme, &NetworkProtocol::scheme);
  if (found != kProtocols.end()) return &*found;
  throw util::TessaryException("cannot read '" + std::string(path) + "': '" + std::string(scheme) +
                               "' is none of udp, rtp, srt, rist, http and https");
}

}  // namespace korr::txsub
