#pragma once

#include <functional>
#include <optional>

#include <QtCore/QBitArray>
#include <QtCore/QObject>

#include <velmodel/picking.h>

#include "vieweractions.h"

class QStatusBar;

namespace Atelier::Vel {
struct CheckFinding;
}

namespace Atelier::Vel::Viewer {

class ModelView;
class PartsPanel;
class ProblemsPanel;

/// What a user does with the model of a window: select, hide, frame, measure, look at problems.
class ModelTools : public QObject {
    Q_OBJECT
public:
    struct Place {
        ViewerActions& actions;
        ModelView& view;
        PartsPanel& parts;
        ProblemsPanel& problems;
        QStatusBar& status;
    };

    /// Requires: what `place` refers to lives as long as `parent`.
    ModelTools(const Place& place, QObject* parent);

private:
    void on(ActionId id, const std::function<void()>& work);
    void hideSelection();
    void isolateSelection();
    void showAll();
    void frameSelection();
    void setVisibleParts(const QBitArray& parts);
    void takeClick(const std::optional<PickHit>& hit);
    void select(const std::optional<PickHit>& hit);
    void setMeasuring(bool isMeasuring);
    void measure(const PickHit& hit);
    void mark(const CheckFinding& finding);

    Place _place;
};

} // namespace Atelier::Vel::Viewer
