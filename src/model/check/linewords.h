#pragma once

#include <string_view>
#include <vector>

#include "import/text/linesource.h"

namespace Atelier::Vel {

/// The words of the current line of a source, up to a comment.
class LineWords {
public:
    /// Makes this the words of the current line of `lines`, which must not advance in the meantime.
    void take(const LineSource& lines);

    /// The number of words, the keyword included.
    int count() const { return static_cast<int>(_words.size()); }
    /// The bytes of a word, as the source has them.
    std::string_view operator[](int word) const { return _words[static_cast<size_t>(word)]; }
    QString text(int word) const;
    /// The column of a word, from 1.
    int column(int word) const;

private:
    const LineSource* _lines = nullptr;
    std::vector<std::string_view> _words;
};

/// How a word reads as a number.
enum class NumberWord { Finite, NotFinite, DecimalComma, None };
NumberWord numberIn(const LineWords& words, int word);

} // namespace Atelier::Vel
