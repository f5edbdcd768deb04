// SPDX-License-Identifier: MIT

// The Tessary Subtitle Converter for hosts: identifiers, media types, configuration and logging.
// C++17, any compiler for 64-bit Windows. See docs/integrating.md for a graph built step by step.
#pragma once

#include <guiddef.h>
#include <unknwn.h>
#include <wtypes.h>

#include <cstdarg>
#include <cstdint>

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter {

/// The filter, in TXSubtitleConverter.ax. Threading model "Both"; may be aggregated.
inline constexpr GUID CLSID_TXSubtitleConverter = {
    0x092F2233, 0x8FA7, 0x431C, {0x80, 0x00, 0xB4, 0xFF, 0x54, 0x5C, 0xFD, 0xC4}};

inline constexpr GUID IID_ISubtitleConverterConfig = {
    0x79591B6A, 0x8201, 0x4E4F, {0x9E, 0x69, 0x83, 0xB9, 0xEB, 0x8F, 0xD3, 0x55}};

inline constexpr GUID IID_ISubtitleConverterLogSink = {
    0xEA5F5ECC, 0x88A4, 0x465C, {0xBF, 0xEC, 0x44, 0xAB, 0xF5, 0xCC, 0xB0, 0xA1}};
inline constexpr GUID IID_ISubtitleConverterLogging = {
    0x2D524EDA, 0x9BAA, 0x4F1D, {0xBA, 0xC4, 0xB5, 0x58, 0x1F, 0xE6, 0x42, 0x3D}};

// The input's media types, major and sub. Every sample begins a PES payload exactly when its sync
// point flag is set; its time is the payload's presentation time.

/// "txts": teletext, DVB subtitles, and everything that comes out.
inline constexpr GUID MEDIATYPE_TimedText = {
    0x73747874, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};

/// PES data fields of EN 300 472. The format block holds the elementary stream's descriptors as the
/// PMT carries them (tag, length, body, one after the other) and may be absent: the teletext
/// descriptor (0x56) names the pages that a language can be followed on.
inline constexpr GUID MEDIASUBTYPE_TeletextPes = {
    0x64EF2C04, 0xF4FE, 0x4FF2, {0x84, 0x63, 0x13, 0xC4, 0xBD, 0x29, 0x13, 0xC0}};

/// PES data fields of EN 300 743.
inline constexpr GUID MEDIASUBTYPE_DvbSubtitlePes = {
    0xBDA91D65, 0x5ABA, 0x4475, {0xA4, 0x53, 0xFB, 0x01, 0x9F, 0x76, 0x8F, 0x89}};

/// cc_data triplets (CEA-708, 4.4) of one picture a sample, in presentation order.
inline constexpr GUID MEDIATYPE_ClosedCaptions = {
    0x9377D9A1, 0xA1F6, 0x4FE7, {0x91, 0xA1, 0xD4, 0x68, 0x33, 0x44, 0x7F, 0xA6}};
inline constexpr GUID MEDIASUBTYPE_ClosedCaptionTriplets = {
    0x26164C25, 0x775C, 0x4D87, {0xAA, 0xA2, 0xE7, 0x04, 0x31, 0x9C, 0xF5, 0x77}};

/// The format type that a media type attached to a sample must have; its format block replaces the
/// connection's.
inline constexpr GUID FORMAT_SubtitleStream = {
    0x479CCF63, 0xFAA1, 0x4987, {0x91, 0x9B, 0x3D, 0xA7, 0x71, 0x95, 0x71, 0x8D}};

// The output's subtypes. A document is one or more samples of the same interval; its first sample
// is a sync point and a discontinuity. A sample without a byte says that nothing is shown.
inline constexpr GUID MEDIASUBTYPE_Ttml = {
    0xA7236CD6, 0xACDE, 0x4109, {0xA8, 0x10, 0x07, 0x0C, 0x91, 0xA3, 0x4A, 0x29}};
inline constexpr GUID MEDIASUBTYPE_WebVtt = {
    0xA37EB91B, 0xC161, 0x47A8, {0x9F, 0xD8, 0x58, 0x84, 0x8E, 0x04, 0x80, 0x29}};
inline constexpr GUID MEDIASUBTYPE_YoutubeSrt = {
    0x3150B2A2, 0x28CA, 0x473B, {0x93, 0xF1, 0x98, 0xCF, 0x51, 0xA1, 0x82, 0x16}};

/// Takes the filter's messages; implemented by the host and frozen. Called from any of the filter's
/// and the graph's threads, one call at a time. Must not throw, and must not call the graph or wait
/// for a thread that does: stopping waits for the filter's thread.
struct ILogger {
  /// One message: a printf format and its arguments, UTF-8, no line feed at its end.
  /// `level`: 0 error, 1 warning, 2 information.
  virtual void STDMETHODCALLTYPE Log(std::uint32_t level, const char* format,
                                     std::va_list arguments) = 0;

  /// Names the buffer counters of the filter's output, whenever its allocator is set up.
  virtual void STDMETHODCALLTYPE NameBufferCounters(const char* name) = 0;

 protected:
  ~ILogger() = default;  // not virtual, deliberately: the filter never deletes a logger
};

/// Configures the filter; asked for on the filter itself. Every method returns S_OK (E_OUTOFMEMORY
/// when memory runs out) and may be called at any time, from any thread.
MIDL_INTERFACE("79591B6A-8201-4E4F-9E69-83B9EB8FD355")
ISubtitleConverterConfig : public IUnknown {
 public:
  /// Sends the messages to `logger`, which is not referenced and must live until the next call.
  /// When the call returns, the previous logger is out of use. Null discards messages again.
  virtual HRESULT STDMETHODCALLTYPE SetLogger(ILogger * logger) = 0;

  /// Stores a value that the filter has no use for.
  virtual HRESULT STDMETHODCALLTYPE SetOpaqueValue(std::uint64_t value) = 0;

  /// Nothing is validated. Takes effect when the graph next leaves the stopped state, the input's
  /// format changes, or a flush ends; set it before connecting the output, whose type follows
  /// `mode`.
  /// `mode`: 2 TTML (the default), 4 WebVTT, 6 SRT; no output with any other.
  /// `page`: teletext: magazine * 256 + page number (0x888 is page 888); captions: service 1 to 4;
  ///   default 0. DVB subtitles: not used.
  /// `durationMs`: a document that lasts longer is repeated once per this many milliseconds;
  ///   default 2000, with 0 at every unit.
  /// `language`: teletext: follow the descriptor with this language code (ISO 639-2, such as
  ///   "eng") instead of `page`; empty (the default) or null: do not. Copied.
  /// `hearingImpaired`: of that language, follow the page for the hard of hearing.
  /// `pageOption`: teletext: the default character-set group; default 0.
  /// `ttmlOption`: not 0: TTML as EBU-TT.
  virtual HRESULT STDMETHODCALLTYPE SetConfiguration(
      std::uint32_t mode, std::uint32_t page, std::uint32_t durationMs, const char* language,
      std::uint8_t hearingImpaired, std::uint32_t pageOption, std::uint8_t ttmlOption) = 0;
};

/// Takes the filter's messages as finished text, for hosts in languages without a va_list;
/// implemented by the host and frozen. Called as ILogger is, under the same rules. What it returns
/// is not looked at; the text is the caller's and ends with the call.
MIDL_INTERFACE("EA5F5ECC-88A4-465C-BFEC-44ABF5CCB0A1")
ISubtitleConverterLogSink : public IUnknown {
 public:
  /// One message, without a line feed at its end. `level`: 0 error, 1 warning, 2 information.
  virtual HRESULT STDMETHODCALLTYPE OnMessage(std::uint32_t level, BSTR text) = 0;

  /// The name of the buffer counters of the filter's output, whenever its allocator is set up.
  virtual HRESULT STDMETHODCALLTYPE OnBufferCountersNamed(BSTR name) = 0;
};

/// Where the filter's messages go, beside ISubtitleConverterConfig::SetLogger, which stays in
/// force; asked for on the filter itself.
MIDL_INTERFACE("2D524EDA-9BAA-4F1D-BAC4-B5581FE6423D")
ISubtitleConverterLogging : public IUnknown {
 public:
  /// Sends the messages to `sink` too, which is referenced until the next call or the filter's end.
  /// When the call returns, the previous sink is out of use. Null: to nobody. Always S_OK; at any
  /// time, from any thread.
  virtual HRESULT STDMETHODCALLTYPE SetLogSink(ISubtitleConverterLogSink * sink) = 0;
};

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter

#ifdef __CRT_UUID_DECL
__CRT_UUID_DECL(
    korr::streaming::direct_show::filters::mqs_subtitle_converter::ISubtitleConverterLogSink,
    0xEA5F5ECC, 0x88A4, 0x465C, 0xBF, 0xEC, 0x44, 0xAB, 0xF5, 0xCC, 0xB0, 0xA1)
__CRT_UUID_DECL(
    korr::streaming::direct_show::filters::mqs_subtitle_converter::ISubtitleConverterLogging,
    0x2D524EDA, 0x9BAA, 0x4F1D, 0xBA, 0xC4, 0xB5, 0x58, 0x1F, 0xE6, 0x42, 0x3D)
__CRT_UUID_DECL(
    korr::streaming::direct_show::filters::mqs_subtitle_converter::ISubtitleConverterConfig,
    0x79591B6A, 0x8201, 0x4E4F, 0x9E, 0x69, 0x83, 0xB9, 0xEB, 0x8F, 0xD3, 0x55)
#endif
