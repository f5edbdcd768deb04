// SPDX-License-Identifier: MIT
#include "readers/libav/av_log.h"

#include <atomic>
#include <string>

extern "C" {
#include <libavutil/log.h>
}

namespace korr::txsub {
namespace {

std::atomic<log::ILogger*> logger{nullptr};

bool isDemuxer(void* source) {
  const AVClass* const sourceClass = source ? *static_cast<AVClass**>(source) : nullptr;
  return sourceClass && sourceClass->category == AV_CLASS_CATEGORY_DEMUXER;
}

void passOn(void* source, int level, const char* format, std::va_list arguments) {
  if (level > AV_LOG_ERROR || !isDemuxer(source)) return;
  std::string text = util::vformat(format, arguments);
  while (!text.empty() && text.back() == '\n') text.pop_back();
  log::write(logger, log::Level::Warning, "%s", text.c_str());
}

}  // namespace

AvLogRoute::AvLogRoute(log::ILogger* target) {
  logger = target;
  av_log_set_callback(passOn);
}

AvLogRoute::~AvLogRoute() {
  av_log_set_callback(av_log_default_callback);
  logger = nullptr;
}

}  // namespace korr::txsub
