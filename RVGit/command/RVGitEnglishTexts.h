#pragma once

#include "RVGit/base/RVExport.h"

inline namespace RVGIT_EXPORT rvgit {

/// Gives every key that the error catalogue shows for want of a text an English one. To be called
/// once, before the first error is made; a client with translations of its own calls
/// setLocalizedString() afterwards, key by key: titles and reasons of the catalogue are their own
/// keys, and placeholders "%@" of a translation are filled in the order of the original. Any
/// thread.
void installEnglishTexts();

}  // namespace rvgit
