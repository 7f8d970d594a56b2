#pragma once

/// What clients may link against. The shared library hides all else, so that no function of a
/// client can take the place of one of the library's own.
#define RVGIT_EXPORT [[gnu::visibility("default")]]
