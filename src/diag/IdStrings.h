#pragma once

#include <cstddef>
#include <string_view>

namespace vorp {

// Interned texts: equal texts give the same pointer for the whole run, so they can be compared by
// pointer and tokens can hold them without owning them. The texts are never freed.
class IdStrings {
public:
    static const char* idString(const char* text);
    static const char* idString(std::string_view text);
};

} // namespace vorp
