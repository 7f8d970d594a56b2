#pragma once

#include <optional>
#include <string_view>

#include "RVGit/base/RVString.h"

/// The first element whose name is exactly this one, else the first whose name equals it by
/// isEqualToUnicodeString(): of two names that differ in their Unicode form alone, each is found by
/// its own bytes. `last` if there is none. `nameOf` gives a text, or an absent one for an element
/// that does not count.
template <typename Iterator, typename NameOf>
[[nodiscard]] Iterator RVFindUnicodeName(Iterator first, Iterator last, std::string_view name,
                                         NameOf nameOf) {
    const RVUnicodeString searched(name);
    Iterator found = last;
    for (Iterator element = first; element != last; ++element) {
        const auto& ownName = nameOf(*element);
        const std::optional<std::string_view> candidate = ownName;
        if (candidate == name)
            return element;
        if (found == last && candidate && searched.isEqualTo(*candidate))
            found = element;
    }
    return found;
}
