#pragma once

#include <velmodel/loadreport.h>

#include "import/text/textline.h"

namespace Atelier::Vel {

LoadDiagnostic::Severity severityOf(LoadDiagnostic::Code code);

/// Collects the observations of one load.
class DiagnosticLog {
public:
    using Code = LoadDiagnostic::Code;
    enum class Use { Kept, Ignored };

    explicit DiagnosticLog(Use use = Use::Kept) : _use(use) {}

    bool isKept() const { return _use == Use::Kept; }

    /// Whether one more observation of `code` is kept.
    bool keeps(Code code) const { return isKept() && _kept.value(code) < LoadReport::kMaxDiagnostics; }

    /// Adds an observation that was made `count` times in `line`, about its part `text`. `describe()` returns
    /// its message. It is called only if the observation is kept.
    template<typename Describe>
    void add(Code code, const TextLine& line, const QString& text, const Describe& describe,
             quint64 count = 1) {
        if (!isKept())
            return;
        if (_kept[code]++ < LoadReport::kMaxDiagnostics)
            _diagnostics.append(
                {code, severityOf(code), line.file, line.number, line.columnOf(text), text, describe()});
        _counts[code] += count;
    }
    /// Counts `count` more observations like the last one of `code`.
    void addMore(Code code, quint64 count) {
        if (isKept())
            _counts[code] += count;
    }
    void copyTo(LoadReport& report) const {
        report.diagnostics = _diagnostics;
        report.diagnosticCounts = _counts;
    }

private:
    Use _use;
    QVector<LoadDiagnostic> _diagnostics;
    QMap<Code, quint64> _counts;
    QMap<Code, quint64> _kept;
};

} // namespace Atelier::Vel
