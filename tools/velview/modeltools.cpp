#include "modeltools.h"

#include <QtWidgets/QAction>
#include <QtWidgets/QStatusBar>

#include "modelview.h"
#include "partspanel.h"
#include "problemspanel.h"
#include "shownmodel.h"

namespace Atelier::Vel::Viewer {

ModelTools::ModelTools(const Place& place, QObject* parent) : QObject(parent), _place(place) {
    on(ActionId::Hide, [this] { hideSelection(); });
    on(ActionId::Isolate, [this] { isolateSelection(); });
    on(ActionId::ShowAll, [this] { showAll(); });
    on(ActionId::FrameSelection, [this] { frameSelection(); });
    connect(_place.actions[ActionId::Measure], &QAction::toggled, this, &ModelTools::setMeasuring);
    connect(&_place.view, &ModelView::clicked, this, &ModelTools::takeClick);
    connect(&_place.parts, &PartsPanel::changed, &_place.view, &ModelView::refresh);
    connect(&_place.parts, &PartsPanel::frameWanted, this, &ModelTools::frameSelection);
    connect(&_place.problems, &ProblemsPanel::chosen, this, &ModelTools::mark);
}

// Runs `work` for an action if there is a model.
void ModelTools::on(ActionId id, const std::function<void()>& work) {
    connect(_place.actions[id], &QAction::triggered, this, [this, work] {
        if (_place.view.model())
            work();
    });
}

void ModelTools::hideSelection() {
    ShownModel& model = *_place.view.model();
    const QBitArray rest = model.visible() & ~model.selected();
    model.setSelected(QBitArray(rest.size()));
    setVisibleParts(rest);
}

void ModelTools::isolateSelection() {
    if (_place.view.model()->hasSelection())
        setVisibleParts(_place.view.model()->selected());
}

void ModelTools::showAll() {
    setVisibleParts(QBitArray(_place.view.model()->contents().parts.size(), true));
}

void ModelTools::frameSelection() {
    const ShownModel& model = *_place.view.model();
    _place.view.frameBox(model.hasSelection() ? model.selectedBox() : model.visibleBox());
}

void ModelTools::setVisibleParts(const QBitArray& parts) {
    _place.view.model()->setVisible(parts);
    _place.parts.readModel();
    _place.view.refresh();
}

void ModelTools::takeClick(const std::optional<PickHit>& hit) {
    if (!_place.view.model())
        return;
    if (!_place.actions[ActionId::Measure]->isChecked())
        select(hit);
    else if (hit)
        measure(*hit);
}

// A click beside the model ends the selection.
void ModelTools::select(const std::optional<PickHit>& hit) {
    ShownModel& model = *_place.view.model();
    QBitArray parts(model.contents().parts.size());
    if (hit)
        parts.setBit(partOf(model.contents(), hit->drawable, hit->command));
    model.setSelected(parts);
    _place.parts.readModel();
    _place.view.refresh();
}

void ModelTools::setMeasuring(bool isMeasuring) {
    _place.view.setCursor(isMeasuring ? Qt::CrossCursor : Qt::ArrowCursor);
    if (isMeasuring)
        return;
    ViewMarks marks = _place.view.marks();
    marks.measured.clear();
    _place.view.setMarks(marks);
    _place.status.clearMessage();
}

void ModelTools::measure(const PickHit& hit) {
    ViewMarks marks = _place.view.marks();
    marks.measure(hit.point);
    _place.view.setMarks(marks);
    for (const MarkLabel& label : distanceLabels(marks))
        _place.status.showMessage(tr("Distance: %1").arg(label.text));
}

// Frames and marks the face of a finding.
void ModelTools::mark(const CheckFinding& finding) {
    ViewMarks marks = _place.view.marks();
    marks.outlines.clear();
    if (!finding.outline.isEmpty())
        marks.outlines.append(finding.outline);
    _place.view.setMarks(marks);
    const ModelBox box = outlineBox(marks);
    if (box.isValid)
        _place.view.frameBox(box);
}

} // namespace Atelier::Vel::Viewer
