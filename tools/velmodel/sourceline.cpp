#include "sourceline.h"

#include <algorithm>
#include <iterator>

namespace Atelier::Vel::Tool {

namespace {

constexpr int kTabWidth = 8;

const QString& ellipsis() {
    static const QString kText = QStringLiteral("...");
    return kText;
}

bool isEscaped(QChar character) {
    switch (character.category()) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return false;
    }
}

QString escaped(QChar character) {
    return QStringLiteral("\\x%1").arg(character.unicode(), 2, 16, QLatin1Char('0'));
}

// The characters of East Asian scripts take two columns of a terminal.
bool isWide(QChar character) {
    struct Range {
        ushort first;
        ushort last;
    };
    constexpr Range kWide[] = {{0x1100, 0x115F}, {0x2E80, 0xA4CF}, {0xAC00, 0xD7A3}, {0xF900, 0xFAFF},
                               {0xFE30, 0xFE6F}, {0xFF00, 0xFF60}, {0xFFE0, 0xFFE6}};
    return std::any_of(std::begin(kWide), std::end(kWide), [character](const Range& range) {
        return character.unicode() >= range.first && character.unicode() <= range.last;
    });
}

// The second half of a character beyond 16 bits counts with the first one.
int widthOf(QChar character) {
    const bool isCombining =
        character.category() == QChar::Mark_NonSpacing || character.category() == QChar::Mark_Enclosing;
    if (isCombining || character.isLowSurrogate())
        return 0;
    return isWide(character) || character.isHighSurrogate() ? 2 : 1;
}

/// A text, and the columns that it takes on a terminal.
struct Shown {
    QString text;
    int columns = 0;

    void add(QChar character) {
        if (character == QLatin1Char('\t')) {
            const int blanks = kTabWidth - columns % kTabWidth;
            text += QString(blanks, QLatin1Char(' '));
            columns += blanks;
        } else if (isEscaped(character)) {
            const QString escape = escaped(character);
            text += escape;
            columns += escape.size();
        } else {
            text += character;
            columns += widthOf(character);
        }
    }
};

} // namespace

QString printable(const QString& text) {
    QString result;
    for (const QChar character : text)
        result += isEscaped(character) ? escaped(character) : QString(character);
    return result;
}

SourceLine sourceLine(const QString& text, int first, int column, int width) {
    const int marked = column > 0 ? column - first : -1; // in `text`
    const int begin = std::clamp(marked - width / 2, 0, std::max(0, text.size() - width));
    const int end = std::min(text.size(), begin + width);
    Shown shown;
    if (begin > 0 || first > 1)
        shown = {ellipsis(), ellipsis().size()};
    SourceLine line;
    for (int i = begin; i < end; ++i) {
        if (i == marked)
            line.mark = shown.columns;
        shown.add(text[i]);
    }
    if (marked >= end)
        line.mark = shown.columns;
    if (end < text.size())
        shown.text += ellipsis();
    line.text = shown.text;
    return line;
}

} // namespace Atelier::Vel::Tool
