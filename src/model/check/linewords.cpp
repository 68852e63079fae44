#include "check/linewords.h"

#include <cmath>

#include "import/text/numbers.h"

namespace Atelier::Vel {

namespace {

bool isBlank(char byte) {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

} // namespace

void LineWords::take(const LineSource& lines) {
    _lines = &lines;
    _words.clear();
    const char* at = lines.begin();
    for (;;) {
        while (at != lines.end() && isBlank(*at))
            ++at;
        const char* const first = at;
        while (at != lines.end() && !isBlank(*at))
            ++at;
        if (first == at || *first == '#')
            return;
        _words.emplace_back(first, static_cast<size_t>(at - first));
    }
}

QString LineWords::text(int word) const {
    const std::string_view bytes = (*this)[word];
    return _lines->text(bytes.data(), bytes.data() + bytes.size());
}

int LineWords::column(int word) const {
    return static_cast<int>((*this)[word].data() - _lines->begin()) + 1;
}

NumberWord numberIn(const LineWords& words, int word) {
    const std::string_view bytes = words[word];
    float value = 0;
    if (parseFloat(bytes.data(), bytes.data() + bytes.size(), value))
        return NumberWord::Finite;
    QString text = words.text(word);
    bool isNumber = false;
    text.toDouble(&isNumber);
    if (isNumber)
        return std::isfinite(text.toFloat()) ? NumberWord::Finite : NumberWord::NotFinite;
    const int comma = text.indexOf(QLatin1Char(','));
    if (comma < 0)
        return NumberWord::None;
    text[comma] = QLatin1Char('.');
    text.toDouble(&isNumber);
    return isNumber ? NumberWord::DecimalComma : NumberWord::None;
}

} // namespace Atelier::Vel
