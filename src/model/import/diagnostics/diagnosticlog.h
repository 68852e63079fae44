#pragma once

#include <velmodel/loadreport.h>

namespace Atelier::Vel {

/// Collects the observations of one load.
class DiagnosticLog {
public:
    using Code = LoadDiagnostic::Code;

    /// Adds an observation that was made `count` times. `describe()` returns its message. It is called only
    /// if the observation is kept.
    template<typename Describe>
    void add(Code code, const QString& file, const QString& text, const Describe& describe,
             quint64 count = 1) {
        if (_kept[code]++ < LoadReport::kMaxDiagnostics)
            _diagnostics.append({code, file, text, describe()});
        _counts[code] += count;
    }
    void copyTo(LoadReport& report) const {
        report.diagnostics = _diagnostics;
        report.diagnosticCounts = _counts;
    }

private:
    QVector<LoadDiagnostic> _diagnostics;
    QMap<Code, quint64> _counts;
    QMap<Code, quint64> _kept;
};

} // namespace Atelier::Vel
