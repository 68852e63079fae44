#include "check/linetexts.h"

#include <algorithm>
#include <memory>

#include <QtCore/QTextStream>

#include "check/linewords.h"
#include "files/textinput.h"

namespace Atelier::Vel {

namespace {

using FindingsOfFile = QVector<CheckFinding*>;

QMap<QString, FindingsOfFile> findingsByFile(FindingLog& log) {
    QMap<QString, FindingsOfFile> files;
    for (QVector<CheckFinding>& findings : log.findings())
        for (CheckFinding& finding : findings)
            if (finding.line > 0)
                files[finding.file].append(&finding);
    for (FindingsOfFile& findings : files)
        std::stable_sort(findings.begin(), findings.end(),
                         [](const CheckFinding* a, const CheckFinding* b) { return a->line < b->line; });
    return files;
}

void resolveWord(CheckFinding& finding, const LineSource& lines) {
    LineWords words;
    words.take(lines);
    const int word = columnOfWord(finding.column); // its own inverse
    const bool exists = word < words.count();
    finding.column = exists ? words.column(word) : 0;
    if (exists)
        finding.text = words.text(word);
}

// A long line is cut around the column.
void setLineText(CheckFinding& finding, const LineSource& lines) {
    constexpr int kBefore = CheckFinding::kLineTextSize / 2;
    const auto size = static_cast<int>(lines.end() - lines.begin());
    const int last = std::max(0, size - CheckFinding::kLineTextSize);
    const int first = std::min(std::max(0, finding.column - kBefore), last);
    const int length = std::min(size - first, CheckFinding::kLineTextSize);
    finding.lineText = lines.text(lines.begin() + first, lines.begin() + first + length);
    finding.lineTextColumn = first + 1;
}

void complete(const FindingsOfFile& findings, QIODevice& device) {
    QTextStream stream(&device);
    LineSourceOptions options = LineSourceOptions::joining(true);
    options.numbersLines = true;
    LineSource lines(&stream, options);
    const auto* finding = findings.begin();
    while (finding != findings.end() && lines.next()) {
        const qint64 number = lines.lineNumber();
        // A line that continues another one, or is too long, has no text of its own.
        while (finding != findings.end() && (*finding)->line < number)
            ++finding;
        for (; finding != findings.end() && (*finding)->line == number; ++finding) {
            if ((*finding)->column < 0)
                resolveWord(**finding, lines);
            setLineText(**finding, lines);
        }
    }
}

} // namespace

void completeFindings(FindingLog& log, ModelSource& source) {
    const QMap<QString, FindingsOfFile> files = findingsByFile(log);
    for (auto file = files.begin(); file != files.end(); ++file)
        if (const std::unique_ptr<TextInput> text = TextInput::open(source, file.key()))
            complete(*file, text->device());
}

} // namespace Atelier::Vel
