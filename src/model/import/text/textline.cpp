#include "import/text/textline.h"

#include <algorithm>

namespace Atelier::Vel {

namespace {

int findBlank(const QString& text, int from) {
    while (from < text.size() && !text[from].isSpace())
        ++from;
    return from;
}

int skipBlanks(const QString& text, int from) {
    while (from < text.size() && text[from].isSpace())
        ++from;
    return from;
}

// The start of the first operand, or of the keyword if there is none.
int startOfOperands(const QString& text) {
    const int keyword = skipBlanks(text, 0);
    const int operands = skipBlanks(text, findBlank(text, keyword));
    return operands < text.size() ? operands : keyword;
}

bool isDelimiter(const QString& text, int at) {
    return at < 0 || at >= text.size() || text[at].isSpace() || text[at] == QLatin1Char('"') ||
           text[at] == QLatin1Char('\'');
}

// Returns: -1 if there is no such word.
int findWord(const QString& text, const QString& word, int from) {
    int at = text.indexOf(word, from);
    while (at >= 0 && !(isDelimiter(text, at - 1) && isDelimiter(text, at + word.size())))
        at = text.indexOf(word, at + 1);
    return at;
}

} // namespace

int TextLine::columnOf(const QString& part) const {
    if (text.isEmpty())
        return 0;
    const int operands = startOfOperands(text);
    const int found = part.isEmpty() ? -1 : findWord(text, part, operands);
    const auto* const begin = text.cbegin();
    const auto* const end = begin + (found < 0 ? operands : found);
    // The second half of a surrogate pair is no character of its own.
    const auto halves = std::count_if(begin, end, [](QChar at) { return at.isLowSurrogate(); });
    return static_cast<int>(end - begin - halves) + 1;
}

} // namespace Atelier::Vel
