#pragma once

namespace vorp {

enum LineType {
    LABEL_LINE = 0,
    CODE_LINE = 1,
    ALIGN_LINE = 3,
    DATA_LINE = 4,
    ASCII_LINE = 5,
    SKIP_LINE = 6,
    LOC_LINE = 7,
    CC_TOP_LINE = 8,
    CC_BOTTOM_LINE = 9,
    DIRECTIVE_LINE = 10,
};

} // namespace vorp
