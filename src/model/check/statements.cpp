#include "check/statements.h"

#include <algorithm>
#include <utility>

#include <QtCore/QTextStream>

#include "check/plainsection.h"

namespace Atelier::Vel {

namespace {

// The numbers that a "v" line may have.
constexpr int kCoordinates = 3;
constexpr int kWithWeight = 4;
constexpr int kWithColour = 6;
constexpr int kWithAlpha = 7;

bool isNumber(NumberWord word) {
    return word == NumberWord::Finite || word == NumberWord::NotFinite;
}

QString part(const QString& corner, int number) {
    return corner.section(QLatin1Char('/'), number, number);
}

bool isInteger(const QString& text) {
    bool isInteger = false;
    text.toInt(&isInteger);
    return isInteger;
}

bool isCorner(const QString& text) {
    return isInteger(part(text, 0)) && (part(text, 1).isEmpty() || isInteger(part(text, 1))) &&
           (part(text, 2).isEmpty() || isInteger(part(text, 2)));
}

} // namespace

StatementCheck::StatementCheck(QString file, FindingLog& log) : _file(std::move(file)), _log(log) {}

FindingPlace StatementCheck::placeOf(int word) const {
    return {_file, _line, _words.column(word)};
}

void StatementCheck::add(CheckCode code, int word, const QString& message) {
    _log.add(code, placeOf(word), [&](CheckFinding& finding) {
        finding.text = _words.text(word);
        finding.message = message.arg(finding.text);
    });
}

void StatementCheck::examine(const ObjReader& reader, bool isRead) {
    _words.take(reader.lines());
    _line = reader.lines().lineNumber();
    if (reader.kind() == ObjReader::Kind::Other)
        examineOther();
    else if (reader.kind() == ObjReader::Kind::Face && !isRead)
        reportMalformedFace();
    else
        examineLine();
}

void StatementCheck::examineAdded(std::string_view bytes, qint64 firstLine, const ObjRun& run) {
    if (bytes.empty() || (hasOnlyOperands(bytes, run) && (_hasColours || run.colourComponents == 0)))
        return;
    QString text = QString::fromUtf8(bytes.data(), static_cast<int>(bytes.size()));
    QTextStream stream(&text);
    LineSource lines(&stream);
    for (_line = firstLine; lines.next(); ++_line) {
        _words.take(lines);
        examineLine();
    }
}

void StatementCheck::examineLine() {
    if (_words.count() == 0)
        return;
    const std::string_view keyword = _words[0];
    if (keyword == "v")
        examinePosition();
    else if (keyword == "vn")
        examineVertex({3, 3, 3});
    else if (keyword == "vt")
        examineVertex({1, 2, 3});
    else if (keyword == "f")
        examineCorners();
}

void StatementCheck::examinePosition() {
    const int numbers = _words.count() - 1;
    const bool isKnown = numbers == kWithWeight || numbers == kWithColour || numbers == kWithAlpha;
    examineVertex({kCoordinates, kCoordinates, isKnown ? numbers : kCoordinates});
    if (numbers == kWithWeight && numberIn(_words, kWithWeight) == NumberWord::Finite &&
        _words.text(kWithWeight).toFloat() != 1.0F)
        add(CheckCode::VertexWeight, kWithWeight, QStringLiteral("The weight %1 has no effect"));
    if (numbers <= kWithWeight || !isKnown || _hasColours)
        return;
    _hasColours = true;
    _log.add(CheckCode::VertexColour, placeOf(kCoordinates + 1), [this](CheckFinding& finding) {
        finding.text = _words.text(kCoordinates + 1);
        finding.message = QStringLiteral("Vertices have colours, which only some programs read");
    });
}

void StatementCheck::examineVertex(const NumberCounts& counts) {
    const int numbers = _words.count() - 1;
    for (int word = 1; word <= std::min(numbers, counts.used); ++word)
        examineNumber(word);
    if (numbers < counts.needed)
        _log.add(CheckCode::NumberMissing, {_file, _line, 0}, [&](CheckFinding& finding) {
            finding.text = _words.text(0);
            finding.message = QStringLiteral("The line has %1 of %2 numbers: the others count as 0")
                                  .arg(numbers)
                                  .arg(counts.needed);
        });
    for (int word = counts.used + 1; word <= numbers; ++word)
        if (word > counts.allowed || !isNumber(numberIn(_words, word)))
            return add(CheckCode::TextBehindNumbers, word,
                       QStringLiteral("'%1' is behind the numbers of the line, and has no effect"));
}

void StatementCheck::examineNumber(int word) {
    switch (numberIn(_words, word)) {
    case NumberWord::Finite:
        return;
    case NumberWord::NotFinite:
        return add(CheckCode::CoordinateNotFinite, word,
                   QStringLiteral("'%1' is not a finite number: triangles with it cannot be drawn"));
    case NumberWord::DecimalComma:
        return add(CheckCode::DecimalComma, word,
                   QStringLiteral("'%1' has a decimal comma in place of a point, and counts as 0"));
    case NumberWord::None:
        return add(CheckCode::NumberMalformed, word, QStringLiteral("'%1' is not a number, and counts as 0"));
    }
}

void StatementCheck::reportMalformedFace() {
    for (int word = 1; word < _words.count(); ++word)
        if (!isCorner(_words.text(word)))
            return add(
                CheckCode::FaceMalformed, word,
                QStringLiteral("The corner '%1' is not made of integers with slashes between them: the "
                               "face is dropped"));
}

void StatementCheck::examineCorners() {
    for (int word = 1; word < _words.count(); ++word) {
        if (_words[word].find('/') == std::string_view::npos)
            continue;
        examineZero(CheckCode::TexCoordOutOfRange, word, 1);
        examineZero(CheckCode::NormalOutOfRange, word, 2);
    }
}

void StatementCheck::examineZero(CheckCode code, int word, int number) {
    const QString index = part(_words.text(word), number);
    bool isInteger = false;
    if (index.toInt(&isInteger) != 0 || !isInteger)
        return;
    add(code, word,
        number == 1 ? QStringLiteral("The corner '%1' has the texture coordinates 0: indices begin at 1")
                    : QStringLiteral("The corner '%1' has the normal 0: indices begin at 1"));
}

void StatementCheck::examineOther() {
    if (_words.count() == 0)
        return;
    const QString keyword = _words.text(0);
    // Names of parts, which a load may use.
    if (keyword == QLatin1String("o") || keyword == QLatin1String("g"))
        return;
    const QString operand = _words.count() > 1 ? _words.text(1) : QString();
    const bool isOff = operand == QLatin1String("off") || operand == QLatin1String("0");
    if (keyword != QLatin1String("s") || !isOff)
        _skipped.add(keyword, placeOf(0));
}

QStringList StatementCheck::finish() {
    _skipped.report(_log, purposeOfObjKeyword);
    if (_skipped.uncounted() == 0)
        return {};
    return {QStringLiteral("%1 lines of '%2', whose keywords come after %3 others")
                .arg(QString::number(_skipped.uncounted()), _file,
                     QString::number(SkippedKeywords::kMaxKeywords))};
}

} // namespace Atelier::Vel
