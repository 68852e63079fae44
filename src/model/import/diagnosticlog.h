#pragma once

#include <velmodel/loadreport.h>

namespace Atelier::Vel {

/// Collects the observations of one load.
class DiagnosticLog {
public:
    using Code = LoadDiagnostic::Code;

    /// `describe()` returns the message. It is called only if the observation is kept.
    template<typename Describe>
    void add(Code code, const QString& file, const QString& text, const Describe& describe) {
        if (++_counts[code] <= LoadReport::kMaxDiagnostics)
            _diagnostics.append({code, file, text, describe()});
    }
    void copyTo(LoadReport& report) const {
        report.diagnostics = _diagnostics;
        report.diagnosticCounts = _counts;
    }

private:
    QVector<LoadDiagnostic> _diagnostics;
    QMap<Code, quint64> _counts;
};

} // namespace Atelier::Vel
