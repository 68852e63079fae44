#pragma once

#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <velmodel/modelcheck.h>

namespace Atelier::Vel {

LoadDiagnostic::Severity severityOf(CheckCode code);

/// Where a finding is: a file, and in it a line and a column from 1, or 0 if there is none. A negative column
/// stands for a word of the line, see columnOfWord().
struct FindingPlace {
    QString file;
    qint64 line = 0;
    int column = 0;
};

/// The column of a word that is not known yet; word 0 is the keyword. completeFindings() replaces it.
constexpr int columnOfWord(int word) {
    return -1 - word;
}

/// Collects the findings of one examination.
class FindingLog {
public:
    /// Adds a finding that was made `count` times. `describe(finding)` sets its text, its message and, if it
    /// is about one face, its outline. It is called only if the finding is kept.
    template<typename Describe>
    void add(CheckCode code, const FindingPlace& place, const Describe& describe, quint64 count = 1) {
        _counts[code] += count;
        if (isFull(code))
            return;
        CheckFinding finding;
        finding.code = code;
        finding.severity = severityOf(code);
        finding.file = place.file;
        finding.line = place.line;
        finding.column = place.column;
        describe(finding);
        _findings[code].append(finding);
    }
    /// Whether further findings of this code are only counted.
    bool isFull(CheckCode code) const { return _findings.value(code).size() >= ModelCheck::kMaxFindings; }
    /// Counts further findings of a code that is full.
    void count(CheckCode code, quint64 count = 1) {
        if (count > 0)
            _counts[code] += count;
    }

    /// All kept findings, to be completed.
    QMap<CheckCode, QVector<CheckFinding>>& findings() { return _findings; }
    /// Moves the findings to a result, the worst first.
    void moveTo(ModelCheck& check) const;

private:
    QMap<CheckCode, QVector<CheckFinding>> _findings;
    QMap<CheckCode, quint64> _counts;
};

} // namespace Atelier::Vel
