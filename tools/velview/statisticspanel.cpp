#include "statisticspanel.h"

#include <QtCore/QLocale>
#include <QtWidgets/QHeaderView>

namespace Atelier::Vel::Viewer {

StatisticsPanel::StatisticsPanel(QWidget* parent)
    : QTreeWidget(parent), _frame(new QTreeWidgetItem(this, {tr("Frame")})) {
    setHeaderLabels({tr("Figure"), tr("Value")});
    header()->setStretchLastSection(false);
    setRootIsDecorated(false);
    setAlternatingRowColors(true);
    setSelectionMode(QAbstractItemView::NoSelection);
    header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    header()->setSectionResizeMode(1, QHeaderView::Stretch);
}

void StatisticsPanel::showLines(const StatisticLines& lines) {
    while (topLevelItemCount() > 1)
        delete topLevelItem(1);
    for (const auto& line : lines)
        (new QTreeWidgetItem(this, {line.first, line.second}))->setToolTip(1, line.second);
}

void StatisticsPanel::showFrameTime(double milliseconds) {
    constexpr double kMillisecondsPerSecond = 1000;
    if (milliseconds <= 0)
        return;
    const QString perSecond = QLocale().toString(kMillisecondsPerSecond / milliseconds, 'f', 0);
    _frame->setText(1, tr("%1 ms, %2/s").arg(QLocale().toString(milliseconds, 'f', 1), perSecond));
}

QString StatisticsPanel::value(const QString& name) const {
    for (int line = 0; line < topLevelItemCount(); ++line)
        if (topLevelItem(line)->text(0) == name)
            return topLevelItem(line)->text(1);
    return {};
}

} // namespace Atelier::Vel::Viewer
