#pragma once

#include <QtCore/QtGlobal>

namespace Atelier::Vel {

/// What a text has, by its bytes.
struct TextContent {
    quint64 lineFeeds = 0;
    bool hasReturns = false; ///< carriage returns
    bool hasOthers = false;  ///< null characters, or bytes beyond ASCII
};

/// Cost: a tenth of a nanosecond per byte with SSE2.
TextContent contentOf(const char* first, const char* last);

/// What a text of plain statements has.
struct WordCounts {
    quint64 words = 0;      ///< that follow a blank or a line feed in the text
    quint64 letters = 0;    ///< characters behind '9'
    bool hasOthers = false; ///< punctuation before '-', or a '0' behind a slash
};

/// Counts up to `last`, the byte at which still belongs to the text.
/// Cost: as contentOf().
WordCounts wordCountsOf(const char* first, const char* last);

} // namespace Atelier::Vel
