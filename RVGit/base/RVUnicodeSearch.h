#pragma once

#include <string_view>

#include "RVGit/base/RVString.h"

/// The first element whose name is exactly this one, else the first whose name equals it by
/// isEqualToUnicodeString(): of two names that differ in their Unicode form alone, each is found by
/// its own bytes. `last` if there is none.
template <typename Iterator, typename NameOf>
[[nodiscard]] Iterator RVFindUnicodeName(Iterator first, Iterator last, std::string_view name,
                                         NameOf nameOf) {
    for (Iterator element = first; element != last; ++element)
        if (nameOf(*element) == name)
            return element;
    if (isASCII(name))
        return last;
    for (Iterator element = first; element != last; ++element)
        if (isEqualToUnicodeString(nameOf(*element), name))
            return element;
    return last;
}
