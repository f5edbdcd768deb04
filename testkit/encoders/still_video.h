// SPDX-License-Identifier: MIT

// The coded data of a grey picture, 64 by 48 at 29.97 Hz, that every decoder accepts.
#pragma once

#include <cstdint>
#include <vector>

namespace korr::encoders::still {

using Bytes = std::vector<std::uint8_t>;

/// H.264 units without start code, header and emulation prevention.
Bytes h264SequenceParameterSet();
Bytes h264PictureParameterSet();
/// The one slice of an IDR picture. `idrPicId`: differs from that of the picture before, 0 or 1.
Bytes h264IdrSlice(unsigned idrPicId);

/// MPEG-2 structures without their start codes.
Bytes mpeg2SequenceHeader();
Bytes mpeg2SequenceExtension();
Bytes mpeg2GroupHeader();
Bytes mpeg2PictureHeader(int temporalReference);
Bytes mpeg2PictureCodingExtension();
inline constexpr std::uint8_t kMpeg2Slices = 3;  ///< start code values 1 to 3
Bytes mpeg2Slice();

}  // namespace korr::encoders::still
