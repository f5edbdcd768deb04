// SPDX-License-Identifier: MIT

// Media types as values.
#pragma once

#include <dshow.h>

/// A media type that owns its format block (COM task memory) and its unknown. A copy that runs out
/// of memory throws std::bad_alloc; `Set` returns E_OUTOFMEMORY.
class CMediaType : public AM_MEDIA_TYPE {
 public:
  CMediaType() { InitMediaType(); }
  explicit CMediaType(const GUID* majorType);
  CMediaType(const AM_MEDIA_TYPE& other);  // NOLINT(google-explicit-constructor): as documented
  CMediaType(const CMediaType& other);
  CMediaType& operator=(const AM_MEDIA_TYPE& other);
  CMediaType& operator=(const CMediaType& other);
  ~CMediaType();

  /// Empties the structure without freeing what it points to: for structures without content.
  void InitMediaType();

  /// Equal types with equal format blocks; flags and sample sizes do not count.
  bool operator==(const CMediaType& other) const;

  HRESULT Set(const AM_MEDIA_TYPE& other);

  bool IsValid() const { return majortype != GUID_NULL; }
  const GUID* Type() const { return &majortype; }
  const GUID* Subtype() const { return &subtype; }
  const GUID* FormatType() const { return &formattype; }
  BYTE* Format() const { return pbFormat; }
  ULONG FormatLength() const { return cbFormat; }  ///< bytes

  void SetType(const GUID* type) { majortype = *type; }
  void SetSubtype(const GUID* type) { subtype = *type; }
  void SetFormatType(const GUID* type) { formattype = *type; }

  /// Copies `length` bytes as the format block. False when memory runs out: the old block stays.
  bool SetFormat(const BYTE* format, ULONG length);

  /// A partial type leaves its major type, or its format type, open (GUID_NULL).
  bool IsPartiallySpecified() const;

  /// Whether this type fits all that `partial` fixes.
  bool MatchesPartial(const CMediaType* partial) const;
};

/// Fills the uninitialised `target` with a copy of `source`.
HRESULT CopyMediaType(AM_MEDIA_TYPE* target, const AM_MEDIA_TYPE* source);

/// Frees what a media type points to, but not the structure.
void FreeMediaType(AM_MEDIA_TYPE& type);

/// Frees a media type in COM task memory and all that it points to. Null is allowed.
void DeleteMediaType(AM_MEDIA_TYPE* type);

/// A copy in COM task memory, or null when memory runs out.
AM_MEDIA_TYPE* CreateMediaType(const AM_MEDIA_TYPE* source);
