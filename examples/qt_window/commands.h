#pragma once

#include <iostream>
#include <string>

#include <QtCore/QEventLoop>
#include <QtCore/QStringList>
#include <QtCore/QTimer>
#include <QtWidgets/QDockWidget>

#include "canvas.h"

/// Carries out what standard input says, line by line, in place of a person:
///
///     add PATH      load a further model
///     reload        read all files again
///     float         take the dock out of the window; `dock` puts it back
///     size W H      resize the canvas
///     save PATH     save a picture of the canvas
///
/// Each line is answered by "done", after the windows have followed it, or by "failed".
class Commands {
public:
    Commands(QDockWidget& dock, Canvas& canvas) : _dock(dock), _canvas(canvas) {}

    /// Returns: the exit code, 0 if all commands were carried out.
    int run() const {
        letWindowsFollow();
        bool isDone = true;
        for (std::string line; std::getline(std::cin, line);) {
            const QStringList words = QString::fromStdString(line).split(QLatin1Char(' '));
            const bool isLineDone = carryOut(words);
            letWindowsFollow();
            isDone = isDone && isLineDone;
            std::cout << (isLineDone ? "done" : "failed") << std::endl;
        }
        return isDone ? 0 : 1;
    }

private:
    bool carryOut(const QStringList& words) const {
        const QString& name = words.first();
        if (name == QLatin1String("add"))
            _canvas.add(words.value(1));
        else if (name == QLatin1String("reload"))
            _canvas.reload();
        else if (name == QLatin1String("float") || name == QLatin1String("dock"))
            _dock.setFloating(name == QLatin1String("float"));
        else if (name == QLatin1String("size"))
            _canvas.setFixedSize(words.value(1).toInt(), words.value(2).toInt());
        else
            return name == QLatin1String("save") && _canvas.grabFramebuffer().save(words.value(1));
        return true;
    }

    // Longer than the X server and Qt's animation of docks take.
    static void letWindowsFollow() {
        constexpr int kMilliseconds = 400;
        QEventLoop events;
        QTimer::singleShot(kMilliseconds, &events, &QEventLoop::quit);
        events.exec();
    }

    QDockWidget& _dock;
    Canvas& _canvas;
};
