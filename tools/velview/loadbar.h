#pragma once

#include <QtWidgets/QWidget>

class QLabel;
class QProgressBar;

namespace Atelier::Vel::Viewer {

struct LoadState;

/// Shows how far a load has come, with a button that cancels it.
class LoadBar : public QWidget {
    Q_OBJECT
public:
    explicit LoadBar(QWidget* parent = nullptr);

    void begin(const QString& path);
    void showState(const LoadState& state);

Q_SIGNALS:
    void cancelClicked();

private:
    QLabel* _text;
    QProgressBar* _bar;
};

} // namespace Atelier::Vel::Viewer
