#include "state/drawstate.h"

#include "drawing/modeldrawing.h"

#include <algorithm>

#include <velgl/instancedataplan.h>
#include <velgl/shaderinterface.h>

#include "drawing/drawbuffersaccess.h"
#include "instances/collectionaccess.h"

namespace Atelier::Vel {

namespace {

static_assert(kMaterialsBinding < DrawState::kStorageCount && kInstancesBinding < DrawState::kStorageCount);

// Finds the buffer of a collection if it has a layout; otherwise the binding point is left to the client.
// Returns: false if there is a layout and the items cannot be stored. A shader would then read other data, so
// the draw must be skipped.
bool findStorage(InstanceDataCollection* collection, qint64 count, GLuint& storage) {
    const InstanceDataPlan* plan = collection ? collection->plan() : nullptr;
    if (!plan || plan->stride() == 0 || count == 0)
        return true;
    storage = CollectionAccess::storage(*collection, count);
    return storage != 0;
}

OrderedRuns orderedRuns(const ContextGL& gl, ModelDrawable& drawable, const CommandSelection& selection) {
    if (selection.order == DrawOrder::AsGiven && selection.filter.passesAll())
        return {&drawable.textures.runs(), 0};
    return drawable.ordered.update(gl, *drawable.buffers, drawable.textures, selection);
}

PreparedDrawable prepared(const ContextGL& gl, ModelDrawable& drawable, ModelTextures& textures,
                          const DrawProgram& program, const CommandSelection& selection) {
    PreparedDrawable result;
    TextureSets& sets = drawable.textures;
    sets.update(drawable.materials.get(), DrawBuffersAccess::commandCount(*drawable.buffers));
    const qint64 instances = qint64(DrawBuffersAccess::lastInstance(*drawable.buffers)) + 1;
    if (!findStorage(drawable.materials.get(), sets.commandCount(), result.materials) ||
        !findStorage(drawable.instances.get(), sets.commandCount() * instances, result.instances))
        return result;
    sets.updateNames(gl, textures);
    result.commands = DrawBuffersAccess::prepare(*drawable.buffers, gl, program);
    if (result.commands == 0)
        return result;
    result.ordered = orderedRuns(gl, drawable, selection);
    result.isDrawn = !result.ordered.runs->empty();
    return result;
}

// Draws one set of textures after the other, in the order that was prepared.
class SetDrawing {
public:
    SetDrawing(const ContextGL& gl, DrawState& state, const DrawProgram& program)
        : _gl(gl), _state(state), _program(program) {}

    void draw(const ModelDrawable& drawable, const OrderedRuns& ordered) {
        useLastInstance(DrawBuffersAccess::lastInstance(*drawable.buffers));
        if (ordered.buffer != 0)
            drawNumbered(drawable, *ordered.runs);
        else
            drawAsGiven(drawable, *ordered.runs);
    }

private:
    void drawAsGiven(const ModelDrawable& drawable, const std::vector<TextureRun>& runs) {
        for (const TextureRun& run : runs) {
            use(drawable.textures, run.set);
            DrawBuffersAccess::draw(*drawable.buffers, _gl, _program, {run.first, run.first + run.count});
        }
    }
    void drawNumbered(const ModelDrawable& drawable, const std::vector<TextureRun>& runs) {
        DrawBuffersAccess::useBaseInstances(_program);
        for (const TextureRun& run : runs) {
            use(drawable.textures, run.set);
            DrawBuffersAccess::drawNumbered(*drawable.buffers, {run.first, run.first + run.count});
        }
    }
    void useLastInstance(int number) {
        if (number != _lastInstance)
            _program.setLastInstance(number);
        _lastInstance = number;
    }
    void use(const TextureSets& sets, int set) {
        _state.bindTextures(sets.names(set), static_cast<GLuint>(sets.unitCount()));
        const int presence = sets.presence(set);
        if (_isPresenceSet && presence == _presence)
            return;
        _program.setTextures(presence);
        _presence = presence;
        _isPresenceSet = true;
    }

    const ContextGL& _gl;
    DrawState& _state;
    const DrawProgram& _program;
    int _presence = 0;
    bool _isPresenceSet = false;
    int _lastInstance = -1; // none is set
};

// Binds the vertex array of a drawable; a derived one is unbound on destruction.
class BoundDrawBuffers {
public:
    BoundDrawBuffers(DrawBuffers& buffers, const ContextGL& gl)
        : _buffers(buffers), _isBound(DrawBuffersAccess::bind(buffers, gl)) {}
    ~BoundDrawBuffers() { DrawBuffersAccess::unbind(_buffers); }
    BoundDrawBuffers(const BoundDrawBuffers&) = delete;
    BoundDrawBuffers& operator=(const BoundDrawBuffers&) = delete;

    bool isBound() const { return _isBound; }

private:
    DrawBuffers& _buffers;
    bool _isBound;
};

void drawPrepared(const ContextGL& gl, ModelDrawable& drawable, const PreparedDrawable& prepared,
                  DrawState& state, SetDrawing& drawing) {
    state.bindStorage(kMaterialsBinding, prepared.materials);
    state.bindStorage(kInstancesBinding, prepared.instances);
    state.setPrimitiveMode(drawable.buffers->primitiveType());
    const BoundDrawBuffers bound(*drawable.buffers, gl);
    const OrderedRuns& ordered = prepared.ordered;
    glBindBuffer(GL_DRAW_INDIRECT_BUFFER, ordered.buffer != 0 ? ordered.buffer : prepared.commands);
    if (bound.isBound())
        drawing.draw(drawable, ordered);
}

// Functions of the client that run meanwhile may add and remove drawables; those that are removed live until
// the draw has ended.
// Returns: the number of texture units that are used.
GLuint prepare(const ContextGL& gl, ModelDrawables& drawables, ModelTextures& textures,
               const DrawProgram& program, const DrawOptions& options) {
    int unitCount = 0;
    CommandSelection selection{options.order, options.filter};
    for (std::size_t i = 0; i < drawables.size(); ++i) {
        ModelDrawable* const drawable = drawables[i].get();
        if (!drawable)
            continue;
        drawable->prepared = {};
        selection.drawable = static_cast<int>(i);
        drawable->prepared = prepared(gl, *drawable, textures, program, selection);
        unitCount = std::max(unitCount, drawable->textures.unitCount());
    }
    return static_cast<GLuint>(unitCount);
}

} // namespace

void drawModel(const ContextGL& gl, ModelDrawables& drawables, ModelTextures& textures,
               const DrawOptions& options) {
    const DrawProgram program =
        options.program ? DrawProgram::of(gl, *options.program) : DrawProgram::current(gl);
    if (program.isNull())
        return;
    const GLuint unitCount = prepare(gl, drawables, textures, program, options);
    DrawState state(options.state, options.program ? program.vertexName() : 0,
                    {options.firstTextureUnit, unitCount}, gl.features().multiBind);
    SetDrawing drawing(gl, state, program);
    for (std::size_t i = 0; i < drawables.size(); ++i) {
        ModelDrawable* const drawable = drawables[i].get();
        if (!drawable || !drawable->prepared.isDrawn)
            continue;
        program.setDrawable(static_cast<int>(i));
        // Only once for each command: glGetError() makes a driver with threads of its own wait for them.
        const int end = drawable->textures.commandCount();
        const bool isFirstDraw = DrawBuffersAccess::isFirstDraw(*drawable->buffers, end);
        if (isFirstDraw)
            DrawBuffersAccess::reportEarlierErrors(*drawable->buffers);
        drawPrepared(gl, *drawable, drawable->prepared, state, drawing);
        if (isFirstDraw)
            DrawBuffersAccess::reportErrorsOfDraw(*drawable->buffers, end);
    }
}

} // namespace Atelier::Vel
