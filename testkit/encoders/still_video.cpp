// SPDX-License-Identifier: MIT
#include "testkit/encoders/still_video.h"

#include "testkit/encoders/bit_writer.h"

namespace korr::encoders::still {
namespace {

constexpr unsigned kWidth = 64;
constexpr unsigned kHeight = 48;
constexpr unsigned kMacroblock = 16;
constexpr unsigned kColumns = kWidth / kMacroblock;
constexpr unsigned kRows = kHeight / kMacroblock;
static_assert(kRows == kMpeg2Slices);

}  // namespace

Bytes h264SequenceParameterSet() {
  BitWriter bits;
  bits.put(66, 8).put(0b1100'0000, 8).put(10, 8);  // Baseline, constrained, level 1
  bits.putUe(0);                                   // seq_parameter_set_id
  bits.putUe(0).putUe(2);                          // log2_max_frame_num_minus4, pic_order_cnt_type
  bits.putUe(1).put(0, 1);                         // max_num_ref_frames, gaps allowed
  bits.putUe(kColumns - 1).putUe(kRows - 1);
  bits.put(1, 1).put(1, 1).put(0, 1);  // frame_mbs_only, direct_8x8_inference, cropping
  bits.put(1, 1);                      // VUI parameters present
  bits.put(0, 4);                      // no aspect ratio, overscan, video signal, chroma location
  bits.put(1, 1).put(1001, 32).put(60'000, 32).put(1, 1);  // timing: two ticks a frame, fixed
  bits.put(0, 4);                                          // no HRDs, pic_struct, restriction
  return bits.putTrailingBits().bytes();
}

Bytes h264PictureParameterSet() {
  BitWriter bits;
  bits.putUe(0).putUe(0);              // pic_parameter_set_id, seq_parameter_set_id
  bits.put(0, 1).put(0, 1);            // CAVLC, bottom_field_pic_order_in_frame_present
  bits.putUe(0).putUe(0).putUe(0);     // one slice group, reference indices
  bits.put(0, 1).put(0, 2);            // weighting
  bits.putUe(0).putUe(0).putUe(0);     // pic_init_qp, pic_init_qs, chroma_qp_index_offset
  bits.put(1, 1).put(0, 1).put(0, 1);  // deblocking control, constrained intra, redundant pictures
  return bits.putTrailingBits().bytes();
}

Bytes h264IdrSlice(unsigned idrPicId) {
  BitWriter bits;
  bits.putUe(0).putUe(7).putUe(0);   // first_mb_in_slice, slice_type I, pic_parameter_set_id
  bits.put(0, 4).putUe(idrPicId);    // frame_num
  bits.put(0, 2).putUe(0).putUe(1);  // dec_ref_pic_marking, slice_qp_delta, no deblocking
  for (unsigned i = 0; i < kColumns * kRows; ++i) {
    bits.putUe(3).putUe(0).putUe(0);  // I_16x16_2_0_0, chroma from DC, mb_qp_delta
    bits.put(1, 1);                   // coeff_token: no coefficients
  }
  return bits.putTrailingBits().bytes();
}

Bytes mpeg2SequenceHeader() {
  BitWriter bits;
  bits.put(kWidth, 12).put(kHeight, 12).put(1, 4).put(4, 4);  // square samples, 29.97 Hz
  bits.put(0x3FFFF, 18).put(1, 1).put(20, 10).put(0, 3);      // bit rate, buffer size, no matrices
  return bits.bytes();
}

Bytes mpeg2SequenceExtension() {
  BitWriter bits;
  bits.put(1, 4).put(0x48, 8);          // identifier, Main profile at Main level
  bits.put(1, 1).put(1, 2).put(0, 4);   // progressive, 4:2:0, sizes
  bits.put(0, 12).put(1, 1).put(0, 8);  // bit rate, buffer size
  bits.put(1, 1).put(0, 7);             // low_delay, frame rate
  return bits.bytes();
}

Bytes mpeg2GroupHeader() {
  BitWriter bits;
  bits.put(0, 12).put(1, 1).put(0, 12);  // time_code 0 around its marker bit
  bits.put(1, 1).put(0, 1);              // closed_gop, broken_link
  return bits.bytes();
}

Bytes mpeg2PictureHeader(int temporalReference) {
  BitWriter bits;
  bits.put(static_cast<unsigned>(temporalReference), 10).put(1, 3);  // an I picture
  bits.put(0xFFFF, 16).put(0, 1);                                    // vbv_delay
  return bits.bytes();
}

Bytes mpeg2PictureCodingExtension() {
  BitWriter bits;
  bits.put(8, 4).put(0xFFFF, 16);  // identifier, f_codes
  bits.put(0, 2).put(3, 2);        // intra_dc_precision, a frame picture
  bits.put(0b01'0000'0110, 10);    // frame_pred_frame_dct, chroma_420_type, progressive_frame
  return bits.bytes();
}

Bytes mpeg2Slice() {
  BitWriter bits;
  bits.put(1, 5).put(0, 1);  // quantiser_scale_code
  for (unsigned i = 0; i < kColumns; ++i) {
    bits.put(1, 1).put(1, 1);                                    // address increment, Intra
    for (int luma = 0; luma < 4; ++luma) bits.put(0b100'10, 5);  // DC as predicted, end of block
    for (int chroma = 0; chroma < 2; ++chroma) bits.put(0b00'10, 4);
  }
  return bits.bytes();
}

}  // namespace korr::encoders::still
