#include "checkjson.h"

#include <QtCore/QJsonArray>

#include "jsonoutput.h"

namespace Atelier::Vel::Tool {

namespace {

QString nameOf(LoadDiagnostic::Severity severity) {
    switch (severity) {
    case LoadDiagnostic::Severity::Note:
        return QStringLiteral("note");
    case LoadDiagnostic::Severity::Warning:
        return QStringLiteral("warning");
    case LoadDiagnostic::Severity::Error:
        return QStringLiteral("error");
    }
    return QString();
}

QJsonArray outlineJson(const QVector<QVector3D>& outline) {
    QJsonArray corners;
    for (const QVector3D& corner : outline)
        corners.append(QJsonArray{jsonFloat(corner.x()), jsonFloat(corner.y()), jsonFloat(corner.z())});
    return corners;
}

QJsonObject findingJson(const CheckFinding& finding) {
    return {{QStringLiteral("code"), checkCodeName(finding.code)},
            {QStringLiteral("severity"), nameOf(finding.severity)},
            {QStringLiteral("file"), finding.file},
            {QStringLiteral("line"), finding.line},
            {QStringLiteral("column"), finding.column},
            {QStringLiteral("text"), finding.text},
            {QStringLiteral("message"), finding.message},
            {QStringLiteral("lineText"), finding.lineText},
            {QStringLiteral("lineTextColumn"), finding.lineTextColumn},
            {QStringLiteral("outline"), outlineJson(finding.outline)}};
}

} // namespace

QJsonObject checkJson(const QString& file, const ModelCheck& check) {
    QJsonObject counts;
    for (auto count = check.counts.begin(); count != check.counts.end(); ++count)
        counts.insert(checkCodeName(count.key()), qint64(*count));
    QJsonArray findings;
    for (const CheckFinding& finding : check.findings)
        findings.append(findingJson(finding));
    return {{QStringLiteral("file"), file},
            {QStringLiteral("loadable"), check.isLoadable},
            {QStringLiteral("triangles"), qint64(check.triangles)},
            {QStringLiteral("counts"), counts},
            {QStringLiteral("findings"), findings},
            {QStringLiteral("notExamined"), QJsonArray::fromStringList(check.notExamined)}};
}

} // namespace Atelier::Vel::Tool
