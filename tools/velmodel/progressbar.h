#pragma once

#include <QtCore/QElapsedTimer>
#include <QtCore/QString>

#include <velmodel/loadprogress.h>

namespace Atelier::Vel::Tool {

/// A bar such as "[#####     ]  50 % cow.obj" of at most `width` columns. It is shorter where there is less
/// room than usual.
QString progressLine(const QString& name, qint64 done, qint64 total, int width);

/// Shows progress on standard error, if that is a terminal. A line has less columns than the terminal.
class ProgressBar {
public:
    /// A smaller file loads so fast that a bar would only flicker.
    static constexpr qint64 kSmallestFile = qint64(16) << 20;
    /// Work that ends earlier shows nothing.
    static constexpr int kPatienceMilliseconds = 1000;

    /// For the load of a file.
    ProgressBar(const QString& path, qint64 fileSize);
    /// For work that is shown only after `milliseconds`.
    static ProgressBar after(int milliseconds, const QString& path);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void show(const LoadStep& step);
    /// `what` names the work.
    void show(const QString& what, qint64 done, qint64 total);

private:
    struct Delay {
        int milliseconds;
    };
    ProgressBar(const QString& path, Delay delay);

    QString _name;
    bool _isActive;
    int _delay = 0; // in milliseconds
    QElapsedTimer _timer;
    QString _shown;
};

} // namespace Atelier::Vel::Tool
