// SPDX-License-Identifier: MIT
#include "readers/libav/av_module.h"

#include "readers/libav/av_address.h"
#include "readers/libav/av_reader.h"

using namespace korr::txsub;

extern "C" __attribute__((visibility("default"))) IMediaReader* txsubOpenWithAvformat(
    const std::string& path, std::unique_ptr<IByteSource> source, const ReaderOptions& options) {
  if (source) return new AvReader(std::move(source), options);
  return new AvReader(path, options);
}

extern "C" __attribute__((visibility("default"))) IByteSource* txsubOpenAddressWithAvformat(
    const AddressRequest& request) {
  return new AvAddress(request);
}

static_assert(std::is_same_v<decltype(txsubOpenAddressWithAvformat), OpenAddressWithAvformat>);
static_assert(std::is_same_v<decltype(txsubOpenWithAvformat), OpenWithAvformat>);
