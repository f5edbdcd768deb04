// SPDX-License-Identifier: MIT

// Inputs that come from a network.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "readers/media_reader.h"

namespace korr::txsub {

/// What may be opened for a kind of address. The list is closed: nothing that a server, a playlist
/// or a container names is opened by any other protocol.
struct NetworkProtocol {
  std::string_view scheme;
  std::string_view opens;    ///< libavformat's protocols, separated by commas
  bool isDatagrams = false;  ///< without a connection: no end, and nobody who sends again
  bool isRtp = false;        ///< datagrams of RFC 3550
};

/// Null for a file's name. Throws util::TessaryException for an address of another protocol.
const NetworkProtocol* networkProtocol(std::string_view path);

/// What the module on libavformat needs to open an address.
struct AddressRequest {
  std::string url;
  std::string protocols;               ///< as NetworkProtocol::opens
  bool (*isStopped)() = nullptr;       ///< whether the user has interrupted; from any thread
  std::chrono::milliseconds stall{0};  ///< how long nothing may come
};

inline constexpr const char* kAddressFunction = "txsubOpenAddressWithAvformat";

/// What that module exports. A read returns what one message brought; 0 at the end, and when the
/// user interrupts. The caller owns the source. Throws util::TessaryException, as do its reads.
using OpenAddressWithAvformat = IByteSource*(const AddressRequest& request);

}  // namespace korr::txsub
