#include "loadbar.h"

#include <QtCore/QFileInfo>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QToolButton>

#include "modelload.h"

namespace Atelier::Vel::Viewer {

namespace {

constexpr int kSteps = 1000;
constexpr int kBarWidth = 160;

} // namespace

LoadBar::LoadBar(QWidget* parent) : QWidget(parent), _text(new QLabel), _bar(new QProgressBar) {
    auto* const button = new QToolButton;
    button->setText(tr("Cancel"));
    button->setObjectName(QStringLiteral("cancelLoad"));
    button->setFocusPolicy(Qt::NoFocus);
    connect(button, &QToolButton::clicked, this, &LoadBar::cancelClicked);
    _bar->setRange(0, kSteps);
    _bar->setFixedWidth(kBarWidth);
    _bar->setTextVisible(false);
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins({});
    row->addWidget(_text);
    row->addWidget(_bar);
    row->addWidget(button);
    hide();
}

void LoadBar::begin(const QString& path) {
    _text->setText(tr("Loading %1").arg(QFileInfo(path).fileName()));
    _bar->setValue(0);
    show();
}

void LoadBar::showState(const LoadState& state) {
    _bar->setValue(int(state.done * kSteps));
    _bar->setToolTip(stageName(state.stage));
}

} // namespace Atelier::Vel::Viewer
