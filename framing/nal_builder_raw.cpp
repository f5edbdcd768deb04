// SPDX-License-Identifier: MIT
#include "framing/nal_builder_raw.h"

namespace korr::encoding::packaging::lib_parse_es::inline v2_1 {

Result NALBuilderRaw::push(std::shared_ptr<const IMediaItem> item) {
  const std::int32_t length = item->length();
  if (length < 1) return kOk;
  const std::uint8_t* data = nullptr;
  const Result result = item->payload(data);
  if (failed(result)) return result;

  auto unit = makeUnit();
  unit->type = type_;
  unit->takeTimeAndFlags(*item);
  unit->payload.assign(data, data + length);
  deliver(std::move(unit));
  return kOk;
}

}  // namespace korr::encoding::packaging::lib_parse_es::inline v2_1
