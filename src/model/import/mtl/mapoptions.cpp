#include "import/mtl/mapoptions.h"

#include <algorithm>
#include <iterator>

namespace Atelier::Vel {

namespace {

struct MapOption {
    const char* name;
    int numbers;       ///< that follow the option, at most
    const char* words; ///< of which one may follow, with blanks around them; null for any
};

constexpr const char* kSwitch = " on off ";
constexpr const char* kNone = " ";

constexpr MapOption kMapOptions[] = {
    {"-s", 3, kNone},        {"-o", 3, kNone},        {"-t", 3, kNone},      {"-mm", 2, kNone},
    {"-bm", 1, kNone},       {"-boost", 1, kNone},    {"-texres", 1, kNone}, {"-clamp", 0, kSwitch},
    {"-blendu", 0, kSwitch}, {"-blendv", 0, kSwitch}, {"-cc", 0, kSwitch},   {"-imfchan", 0, " r g b m l z "},
    {"-type", 0, nullptr},
};

constexpr const MapOption* kScale = kMapOptions;
constexpr const MapOption* kOffset = kMapOptions + 1;

/// The words of a text that an option may still take: all but the last.
class OptionWords {
public:
    explicit OptionWords(const QString& text) : _text(text) { skipBlanks(); }

    /// The next word; null for the last one.
    QString word() const {
        const int end = wordEnd();
        return rest(end).isEmpty() ? QString() : _text.mid(_at, end - _at);
    }
    void take() {
        _at = wordEnd();
        skipBlanks();
    }
    QString left() const { return _text.mid(_at); }

private:
    QString rest(int from) const { return _text.mid(from).trimmed(); }
    int wordEnd() const {
        int end = _at;
        while (end < _text.size() && !_text[end].isSpace())
            ++end;
        return end;
    }
    void skipBlanks() {
        while (_at < _text.size() && _text[_at].isSpace())
            ++_at;
    }

    const QString& _text;
    int _at = 0;
};

const MapOption* findOption(const QString& word) {
    const auto* const found =
        std::find_if(std::begin(kMapOptions), std::end(kMapOptions), [&word](const MapOption& option) {
            return word.compare(QLatin1String(option.name), Qt::CaseInsensitive) == 0;
        });
    return found == std::end(kMapOptions) ? nullptr : found;
}

bool takesWord(const MapOption& option, const QString& word) {
    const bool isListed =
        option.words == nullptr ||
        QString::fromLatin1(option.words).contains(QLatin1Char(' ') + word.toLower() + QLatin1Char(' '));
    return !word.isNull() && isListed;
}

// Takes an option with its numbers, of which the first two are written to `values`, or with its word.
void takeOption(const MapOption& option, OptionWords& words, float (&values)[2]) {
    words.take();
    bool isNumber = true;
    for (int i = 0; i < option.numbers && isNumber; ++i) {
        const float value = words.word().toFloat(&isNumber);
        if (isNumber && i < 2)
            values[i] = value;
        if (isNumber)
            words.take();
    }
    if (takesWord(option, words.word()))
        words.take();
}

} // namespace

MapOptions parseMapOptions(const QString& text) {
    MapOptions options;
    OptionWords words(text);
    while (const MapOption* const option = findOption(words.word())) {
        float ignored[2];
        takeOption(*option, words,
                   option == kOffset  ? options.offset
                   : option == kScale ? options.scale
                                      : ignored);
    }
    options.name = words.left();
    return options;
}

} // namespace Atelier::Vel
