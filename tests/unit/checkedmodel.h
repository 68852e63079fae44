#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QStringList>
#include <QtCore/QTemporaryDir>

#include <velmodel/modelcheck.h>

namespace Atelier::Vel::Testing {

/// A model in a folder of its own, for its examination.
class CheckedModel {
public:
    /// Writes "m.obj".
    explicit CheckedModel(const QByteArray& text) { write(QStringLiteral("m.obj"), text); }

    void write(const QString& name, const QByteArray& content) const {
        QFile file(path(name));
        if (file.open(QIODevice::WriteOnly))
            file.write(content);
    }
    QString path(const QString& name) const { return _folder.filePath(name); }
    ModelCheck check(const CheckOptions& options = {}) const {
        return checkOBJFile(path(QStringLiteral("m.obj")), options);
    }
    /// All findings as text: "file:line:column severity code 'text': message", without the path of the
    /// folder.
    QStringList findings(const CheckOptions& options = {}) const {
        QStringList lines;
        for (const CheckFinding& finding : check(options).findings)
            lines.append(described(finding).remove(_folder.path() + '/'));
        return lines;
    }

private:
    static QString described(const CheckFinding& finding) {
        const char* const severities[] = {"note", "warning", "error"};
        return QStringLiteral("%1:%2:%3 %4 %5 '%6': %7")
            .arg(QFileInfo(finding.file).fileName(), QString::number(finding.line),
                 QString::number(finding.column), severities[static_cast<int>(finding.severity)],
                 checkCodeName(finding.code), finding.text, finding.message);
    }

    QTemporaryDir _folder;
};

/// Five lines: three positions, a normal, and a face.
inline QByteArray soundTriangle() {
    return "v 0 0 0\nv 1 0 0\nv 0 1 0\nvn 0 0 1\nf 1//1 2//1 3//1\n";
}

} // namespace Atelier::Vel::Testing
