#include "messagebar.h"

#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QStyle>
#include <QtWidgets/QToolButton>

namespace Atelier::Vel::Viewer {

MessageBar::MessageBar(QWidget* parent) : QFrame(parent), _text(new QLabel) {
    constexpr int kIconSize = 20;
    auto* const icon = new QLabel;
    icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(kIconSize));
    _text->setWordWrap(true);
    _text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* const button = new QToolButton;
    button->setText(tr("Close"));
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::NoFocus);
    connect(button, &QToolButton::clicked, this, &QWidget::hide);
    auto* const row = new QHBoxLayout(this);
    row->addWidget(icon);
    row->addWidget(_text, 1);
    row->addWidget(button);
    setFrameShape(QFrame::StyledPanel);
    hide();
}

void MessageBar::showError(const QString& text) {
    _text->setText(text);
    show();
}

QString MessageBar::text() const {
    return _text->text();
}

} // namespace Atelier::Vel::Viewer
