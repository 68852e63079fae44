#pragma once

#include <QtWidgets/QWidget>

#include <velmodel/modelcheck.h>

class QLabel;
class QTreeWidget;
class QTreeWidgetItem;

namespace Atelier::Vel::Viewer {

/// Lists what is wrong with a file.
class ProblemsPanel : public QWidget {
    Q_OBJECT
public:
    explicit ProblemsPanel(QWidget* parent = nullptr);

    /// Shows that the file is being examined.
    void showExamining();
    void showCheck(const ModelCheck& check);
    /// One line for each finding: the file, the line, the severity, the message and the code.
    QString text() const;
    QTreeWidget& list() const { return *_list; }
    QString summary() const;

Q_SIGNALS:
    /// The user has chosen a finding.
    void chosen(const CheckFinding& finding);

private:
    void addFinding(const CheckFinding& finding);

    ModelCheck _check;
    QLabel* _summary;
    QTreeWidget* _list;
};

} // namespace Atelier::Vel::Viewer
