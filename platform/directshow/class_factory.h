// SPDX-License-Identifier: MIT

// The class factory of a module and its way into the registry.
#pragma once

#include "platform/directshow/base_filter.h"
#include "platform/directshow/unknown.h"

/// Makes an object with a reference count of 0. Stores a failure in `result`, which is S_OK before.
using LPFNNewCOMObject = CUnknown*(CALLBACK*)(IUnknown* outer, HRESULT* result);

/// Called when the module is loaded and unloaded; may be null.
using LPFNInitRoutine = void(CALLBACK*)(BOOL loading, const CLSID* clsid);

/// One class that the module serves.
struct CFactoryTemplate {
  const WCHAR* m_Name;
  const CLSID* m_ClsID;
  LPFNNewCOMObject m_lpfnNew;
  LPFNInitRoutine m_lpfnInit;
  const AMOVIESETUP_FILTER* m_pAMovieSetup_Filter;
};

/// The classes of the module, defined by the module.
extern CFactoryTemplate g_Templates[];
extern int g_cTemplates;

/// Writes the module's classes to the registry ("CLSID\{...}" with "InprocServer32" and the
/// threading model "Both") and tells the filter mapper of its filters, or removes both. A
/// registration that fails is taken back.
STDAPI AMovieDllRegisterServer2(BOOL add);
