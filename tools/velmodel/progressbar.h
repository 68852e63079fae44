#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <velmodel/loadprogress.h>

namespace Atelier::Vel::Tool {

/// A bar such as "[#####     ]  50 % cow.obj" of at most `width` columns.
QString progressLine(const QString& name, qint64 done, qint64 total, int width);

/// Shows the progress of a load on standard error, if that is a terminal and the file is large.
class ProgressBar {
public:
    /// A smaller file loads so fast that a bar would only flicker.
    static constexpr qint64 kSmallestFile = qint64(16) << 20;

    ProgressBar(const QString& path, qint64 fileSize);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void show(const LoadStep& step);

private:
    QString _name;
    bool _isActive;
    QString _shown;
};

} // namespace Atelier::Vel::Tool
