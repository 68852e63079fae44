#include "import/text/names.h"

namespace Atelier::Vel {

namespace {

bool isQuote(QChar character) {
    return character == QLatin1Char('"') || character == QLatin1Char('\'');
}

// The end of the word that begins at `begin`: after the closing quote, or before white space.
int endOfWord(const QString& text, int begin) {
    const int closing = isQuote(text[begin]) ? text.indexOf(text[begin], begin + 1) : -1;
    if (closing >= 0)
        return closing + 1;
    int end = begin;
    while (end < text.size() && !text[end].isSpace())
        ++end;
    return end;
}

} // namespace

QString withoutComment(const QString& text) {
    int mark = text.indexOf(QLatin1Char('#'));
    while (mark > 0 && !text[mark - 1].isSpace())
        mark = text.indexOf(QLatin1Char('#'), mark + 1);
    return text.left(mark).trimmed(); // the whole text if there is no comment
}

QString unquoted(const QString& text) {
    const int inner = text.size() - 2;
    const bool isQuoted = inner >= 0 && isQuote(text.front()) && text.indexOf(text.front(), 1) == inner + 1;
    return isQuoted ? text.mid(1, inner) : text;
}

QStringList wordsOf(const QString& text) {
    QStringList words;
    for (int begin = 0; begin < text.size();) {
        if (text[begin].isSpace()) {
            ++begin;
            continue;
        }
        const int end = endOfWord(text, begin);
        words.append(unquoted(text.mid(begin, end - begin)));
        begin = end;
    }
    return words;
}

QStringList nameCandidates(const QString& rest) {
    const QString uncommented = withoutComment(rest);
    QStringList candidates{unquoted(rest.trimmed()), unquoted(uncommented), wordsOf(rest).value(0)};
    candidates.removeDuplicates();
    return candidates;
}

} // namespace Atelier::Vel
