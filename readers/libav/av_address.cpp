// SPDX-License-Identifier: MIT
#include "readers/libav/av_address.h"

extern "C" {
#include <libavformat/avformat.h>
#include <libavformat/avio.h>
#include <libavutil/dict.h>
#include <libavutil/error.h>
}

#include <array>
#include <limits>

#include "util/exception.h"

namespace korr::txsub {

AvAddress::AvAddress(const AddressRequest& request) : request_(request) {
  avformat_network_init();
  av_log_set_level(AV_LOG_QUIET);
  AVDictionary* settings = nullptr;
  av_dict_set(&settings, "protocol_whitelist", request_.protocols.c_str(), 0);
  // Of datagrams; other protocols do not know these. Enough for 10 Mbit/s while a core is busy with
  // something else for seconds.
  av_dict_set(&settings, "buffer_size", "4194304", 0);
  av_dict_set(&settings, "overrun_nonfatal", "1", 0);
  const AVIOInterruptCB interrupt{.callback = &AvAddress::shouldStop, .opaque = this};
  const int error = avio_open2(&io_, request_.url.c_str(), AVIO_FLAG_READ, &interrupt, &settings);
  av_dict_free(&settings);
  if (error < 0) fail(error);
  lastMessage_ = Clock::now();
}

AvAddress::~AvAddress() {
  avio_closep(&io_);
}

std::size_t AvAddress::read(std::uint8_t* buffer, std::size_t size) {
  constexpr std::size_t kMost = std::numeric_limits<int>::max();
  lastMessage_ = Clock::now();
  for (;;) {
    const int count = avio_read_partial(io_, buffer, static_cast<int>(std::min(size, kMost)));
    if (count > 0) return static_cast<std::size_t>(count);
    if (request_.isStopped()) return 0;
    if (count == AVERROR_EOF) return 0;
    if (count != 0 && count != AVERROR(EAGAIN)) fail(count);
    if (isStalled()) fail(AVERROR_EXIT);
  }
}

int AvAddress::shouldStop(void* self) noexcept {
  const auto& address = *static_cast<const AvAddress*>(self);
  return address.request_.isStopped() || address.isStalled() ? 1 : 0;
}

void AvAddress::fail(int error) const {
  if (error == AVERROR_EXIT && isStalled()) {
    throw util::TessaryException("nothing has come for " +
                                 std::to_string(request_.stall.count() / 1000) + " s");
  }
  std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
  av_strerror(error, text.data(), text.size());
  throw util::TessaryException(text.data());
}

}  // namespace korr::txsub
