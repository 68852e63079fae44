#include "checktext.h"

#include <algorithm>
#include <utility>

#include <QtCore/QStringList>

#include "sourceline.h"

namespace Atelier::Vel::Tool {

namespace {

using Severity = LoadDiagnostic::Severity;

constexpr int kLineWidth = 100;

struct SeverityFacts {
    Severity severity;
    const char* one;
    const char* many;
    const char* colour;
};

constexpr SeverityFacts kSeverities[] = {{Severity::Error, "error", "errors", "\x1b[1;31m"},
                                         {Severity::Warning, "warning", "warnings", "\x1b[1;33m"},
                                         {Severity::Note, "note", "notes", "\x1b[1;36m"}};
constexpr const char* kBold = "\x1b[1m";
constexpr const char* kPlain = "\x1b[0m";

/// Makes the text of a file.
class Page {
public:
    Page(const ModelCheck& check, Colours colours) : _check(check), _colours(colours) {}

    QString text(const QString& file) const;

private:
    quint64 countOf(Severity severity) const;
    QString coloured(const char* colour, const QString& text) const;
    QString summary() const;
    QString section(const SeverityFacts& facts) const;
    QString finding(const CheckFinding& finding, const char* colour) const;
    QString rest(CheckCode code, int shown) const;

    const ModelCheck& _check;
    Colours _colours;
};

QString Page::coloured(const char* colour, const QString& text) const {
    return _colours == Colours::Off ? text : QLatin1String(colour) + text + QLatin1String(kPlain);
}

Severity severityOf(const ModelCheck& check, CheckCode code) {
    const auto found = std::find_if(check.findings.cbegin(), check.findings.cend(),
                                    [code](const CheckFinding& finding) { return finding.code == code; });
    return found == check.findings.cend() ? Severity::Note : found->severity;
}

quint64 Page::countOf(Severity severity) const {
    quint64 count = 0;
    for (auto code = _check.counts.begin(); code != _check.counts.end(); ++code)
        count += severityOf(_check, code.key()) == severity ? *code : 0;
    return count;
}

QString Page::summary() const {
    QStringList parts;
    for (const SeverityFacts& facts : kSeverities)
        if (const quint64 count = countOf(facts.severity); count > 0)
            parts.append(
                QStringLiteral("%1 %2").arg(count).arg(QLatin1String(count == 1 ? facts.one : facts.many)));
    return parts.isEmpty() ? QStringLiteral("nothing found") : parts.join(QStringLiteral(", "));
}

QString placeOf(const CheckFinding& finding) {
    QString place = printable(finding.file);
    if (finding.line > 0)
        place += QStringLiteral(":%1").arg(finding.line);
    if (finding.line > 0 && finding.column > 0)
        place += QStringLiteral(":%1").arg(finding.column);
    return place;
}

QString Page::finding(const CheckFinding& finding, const char* colour) const {
    QString text =
        QStringLiteral("  %1: %2 [%3]\n")
            .arg(coloured(kBold, placeOf(finding)), printable(finding.message), checkCodeName(finding.code));
    if (finding.lineTextColumn == 0 || finding.lineText.trimmed().isEmpty())
        return text;
    const SourceLine line = sourceLine(finding.lineText, finding.lineTextColumn, finding.column, kLineWidth);
    text += QStringLiteral("    ") + line.text + QLatin1Char('\n');
    if (line.mark >= 0)
        text += QString(4 + line.mark, QLatin1Char(' ')) + coloured(colour, QStringLiteral("^")) +
                QLatin1Char('\n');
    return text;
}

QString Page::rest(CheckCode code, int shown) const {
    const quint64 left = _check.counts.value(code) - quint64(shown);
    // A single finding may be about many places, and says so.
    if (shown < ModelCheck::kMaxFindings || left == 0)
        return {};
    return QStringLiteral("  and %1 more [%2]\n").arg(QString::number(left), checkCodeName(code));
}

QString Page::section(const SeverityFacts& facts) const {
    QString text;
    int shown = 0;
    for (int i = 0; i < _check.findings.size(); ++i) {
        const CheckFinding& current = _check.findings[i];
        if (current.severity != facts.severity)
            continue;
        text += finding(current, facts.colour);
        ++shown;
        const bool isLast = i + 1 == _check.findings.size() || _check.findings[i + 1].code != current.code;
        if (isLast)
            text += rest(current.code, std::exchange(shown, 0));
    }
    return text.isEmpty() ? text
                          : coloured(facts.colour, QLatin1String(facts.many)) + QLatin1Char('\n') + text;
}

QString Page::text(const QString& file) const {
    QString text = coloured(kBold, printable(file)) + QStringLiteral(": ") + summary() + QLatin1Char('\n');
    for (const SeverityFacts& facts : kSeverities)
        text += section(facts);
    if (!_check.notExamined.isEmpty())
        text += QStringLiteral("not examined\n");
    for (const QString& sentence : _check.notExamined)
        text += QStringLiteral("  ") + printable(sentence) + QLatin1Char('\n');
    return text;
}

} // namespace

QString checkText(const QString& file, const ModelCheck& check, Colours colours) {
    return Page(check, colours).text(file);
}

} // namespace Atelier::Vel::Tool
