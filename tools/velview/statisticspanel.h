#pragma once

#include <QtWidgets/QTreeWidget>

#include "modelstatistics.h"

namespace Atelier::Vel::Viewer {

/// Shows the figures of a model, and how fast it is drawn.
class StatisticsPanel : public QTreeWidget {
    Q_OBJECT
public:
    explicit StatisticsPanel(QWidget* parent = nullptr);

    void showLines(const StatisticLines& lines);
    /// Of the last complete frame.
    void showFrameTime(double milliseconds);
    /// The value of a line; null if there is none.
    QString value(const QString& name) const;

private:
    QTreeWidgetItem* _frame; // the first line
};

} // namespace Atelier::Vel::Viewer
