#pragma once

#include <QtWidgets/QFrame>

class QLabel;

namespace Atelier::Vel::Viewer {

/// A line above the view with a message, until the user or another load closes it.
class MessageBar : public QFrame {
    Q_OBJECT
public:
    explicit MessageBar(QWidget* parent = nullptr);

    void showError(const QString& text);
    QString text() const;

private:
    QLabel* _text;
};

} // namespace Atelier::Vel::Viewer
