#include "problemspanel.h"

#include <QtCore/QFileInfo>
#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QStyle>
#include <QtWidgets/QTreeWidget>
#include <QtWidgets/QVBoxLayout>

namespace Atelier::Vel::Viewer {

namespace {

using Severity = LoadDiagnostic::Severity;

enum Column { Message, Place, Code };

QString severityName(Severity severity) {
    switch (severity) {
    case Severity::Error:
        return ProblemsPanel::tr("error");
    case Severity::Warning:
        return ProblemsPanel::tr("warning");
    default:
        return ProblemsPanel::tr("note");
    }
}

QStyle::StandardPixmap severityIcon(Severity severity) {
    switch (severity) {
    case Severity::Error:
        return QStyle::SP_MessageBoxCritical;
    case Severity::Warning:
        return QStyle::SP_MessageBoxWarning;
    default:
        return QStyle::SP_MessageBoxInformation;
    }
}

QString placeOf(const QString& file, const CheckFinding& finding) {
    QString place = file;
    if (finding.line > 0)
        place += QStringLiteral(":%1").arg(finding.line);
    if (finding.line > 0 && finding.column > 0)
        place += QStringLiteral(":%1").arg(finding.column);
    return place;
}

quint64 sum(const QMap<CheckCode, quint64>& counts) {
    quint64 all = 0;
    for (const quint64 count : counts)
        all += count;
    return all;
}

} // namespace

ProblemsPanel::ProblemsPanel(QWidget* parent)
    : QWidget(parent), _summary(new QLabel), _list(new QTreeWidget) {
    _list->setHeaderLabels({tr("Problem"), tr("Place"), tr("Code")});
    _list->setRootIsDecorated(false);
    _list->setUniformRowHeights(true);
    _list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    _list->header()->setSectionResizeMode(Message, QHeaderView::Stretch);
    _list->header()->setStretchLastSection(false);
    connect(_list, &QTreeWidget::itemClicked, this, [this](QTreeWidgetItem* item) {
        Q_EMIT chosen(_check.findings[_list->indexOfTopLevelItem(item)]);
    });
    auto* const copy = new QPushButton(tr("Copy as Text"));
    connect(copy, &QPushButton::clicked, this, [this] { QGuiApplication::clipboard()->setText(text()); });
    auto* const row = new QHBoxLayout;
    row->addWidget(_summary, 1);
    row->addWidget(copy);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(4, 4, 4, 4);
    column->addWidget(_list, 1);
    column->addLayout(row);
}

void ProblemsPanel::showExamining() {
    showCheck({});
    _summary->setText(tr("Examining the file..."));
}

void ProblemsPanel::showCheck(const ModelCheck& check) {
    _check = check;
    _list->clear();
    for (const CheckFinding& finding : check.findings)
        addFinding(finding);
    const quint64 all = sum(check.counts);
    QString summary = all == 0
                          ? tr("No problems")
                          : tr("%1 findings, of which %2 are listed").arg(all).arg(check.findings.size());
    for (const QString& sentence : check.notExamined)
        summary += QLatin1Char('\n') + sentence;
    _summary->setText(summary);
}

void ProblemsPanel::addFinding(const CheckFinding& finding) {
    const QString file = QFileInfo(finding.file).fileName();
    auto* const item =
        new QTreeWidgetItem(_list, {finding.message, placeOf(file, finding), checkCodeName(finding.code)});
    item->setIcon(Message, style()->standardIcon(severityIcon(finding.severity)));
    item->setToolTip(Message, finding.lineText.isEmpty() ? finding.message : finding.lineText);
    item->setToolTip(Place, finding.file);
}

QString ProblemsPanel::text() const {
    QString text;
    for (const CheckFinding& finding : _check.findings)
        text += QStringLiteral("%1: %2: %3 [%4]\n")
                    .arg(placeOf(finding.file, finding), severityName(finding.severity), finding.message,
                         checkCodeName(finding.code));
    return text;
}

QString ProblemsPanel::summary() const {
    return _summary->text();
}

} // namespace Atelier::Vel::Viewer
