#include <epoxy/gl.h>

#include <velgl/renderstate.h>

#include <algorithm>

#include "context/currentcontext.h"

namespace Atelier::Vel {

namespace {

constexpr GLenum kCapabilities[] = {GL_DEPTH_TEST,     GL_CULL_FACE,   GL_STENCIL_TEST,
                                    GL_COLOR_LOGIC_OP, GL_MULTISAMPLE, GL_RASTERIZER_DISCARD};
constexpr int kCapabilityCount = 6;
static_assert(sizeof kCapabilities / sizeof *kCapabilities == kCapabilityCount);

void setEnabled(GLenum capability, GLboolean isEnabled) {
    isEnabled ? glEnable(capability) : glDisable(capability);
}

void setEnabledAt(GLenum capability, GLuint index, GLboolean isEnabled) {
    isEnabled ? glEnablei(capability, index) : glDisablei(capability, index);
}

GLenum comparison(RenderState::DepthTest test) {
    switch (test) {
    case RenderState::DepthTest::Less:
        return GL_LESS;
    case RenderState::DepthTest::LessOrEqual:
        return GL_LEQUAL;
    case RenderState::DepthTest::Equal:
        return GL_EQUAL;
    case RenderState::DepthTest::GreaterOrEqual:
        return GL_GEQUAL;
    case RenderState::DepthTest::Greater:
        return GL_GREATER;
    case RenderState::DepthTest::Off:
        break;
    }
    return GL_ALWAYS;
}

GLenum polygonMode(RenderState::Fill fill) {
    switch (fill) {
    case RenderState::Fill::Lines:
        return GL_LINE;
    case RenderState::Fill::Points:
        return GL_POINT;
    case RenderState::Fill::Solid:
        break;
    }
    return GL_FILL;
}

GLenum blendFactor(RenderState::Factor factor) {
    switch (factor) {
    case RenderState::Factor::Zero:
        return GL_ZERO;
    case RenderState::Factor::One:
        return GL_ONE;
    case RenderState::Factor::SourceColor:
        return GL_SRC_COLOR;
    case RenderState::Factor::OneMinusSourceColor:
        return GL_ONE_MINUS_SRC_COLOR;
    case RenderState::Factor::SourceAlpha:
        return GL_SRC_ALPHA;
    case RenderState::Factor::OneMinusSourceAlpha:
        break;
    }
    return GL_ONE_MINUS_SRC_ALPHA;
}

bool replaces(const RenderState::Blend& blend) {
    return blend.source == RenderState::Factor::One && blend.target == RenderState::Factor::Zero;
}

// Blending and the write mask of one output.
struct OutputState {
    bool areFunctionsSaved = false; // else they stay
    GLint functions[4] = {};        // source and target of colours, then of alpha
    GLint equations[2] = {};        // of colours and of alpha
    GLboolean isBlended = GL_FALSE;
    GLboolean writes[4] = {};

    void save(GLuint output, const RenderState::Blend& next) {
        isBlended = glIsEnabledi(GL_BLEND, output);
        glGetBooleani_v(GL_COLOR_WRITEMASK, output, writes);
        areFunctionsSaved = !replaces(next);
        if (!areFunctionsSaved)
            return;
        glGetIntegeri_v(GL_BLEND_SRC_RGB, output, &functions[0]);
        glGetIntegeri_v(GL_BLEND_DST_RGB, output, &functions[1]);
        glGetIntegeri_v(GL_BLEND_SRC_ALPHA, output, &functions[2]);
        glGetIntegeri_v(GL_BLEND_DST_ALPHA, output, &functions[3]);
        glGetIntegeri_v(GL_BLEND_EQUATION_RGB, output, &equations[0]);
        glGetIntegeri_v(GL_BLEND_EQUATION_ALPHA, output, &equations[1]);
    }

    void restore(GLuint output) const {
        setEnabledAt(GL_BLEND, output, isBlended);
        glColorMaski(output, writes[0], writes[1], writes[2], writes[3]);
        if (!areFunctionsSaved)
            return;
        glBlendFuncSeparatei(output, static_cast<GLenum>(functions[0]), static_cast<GLenum>(functions[1]),
                             static_cast<GLenum>(functions[2]), static_cast<GLenum>(functions[3]));
        glBlendEquationSeparatei(output, static_cast<GLenum>(equations[0]),
                                 static_cast<GLenum>(equations[1]));
    }

    static void apply(GLuint output, const RenderState::Blend& blend) {
        glColorMaski(output, GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
        setEnabledAt(GL_BLEND, output, replaces(blend) ? GL_FALSE : GL_TRUE);
        if (replaces(blend))
            return;
        glBlendFunci(output, blendFactor(blend.source), blendFactor(blend.target));
        glBlendEquationi(output, GL_FUNC_ADD);
    }
};

} // namespace

struct ScopedRenderState::Data {
    quint64 context = 0;
    GLboolean capabilities[kCapabilityCount] = {};
    GLboolean isScissored = GL_FALSE; // for viewport 0, the only one that VelGL uses
    GLint depthFunction = GL_LESS;
    GLboolean writesDepth = GL_TRUE;
    GLint culled = GL_BACK;
    GLint polygonModes[2] = {}; // front and back; a core profile has one, which drivers return once or twice
    OutputState outputs[RenderState::kMaxBlends];

    void save(const RenderState& next);
    static void apply(const RenderState& state);
    void restore() const;
};

void ScopedRenderState::Data::save(const RenderState& next) {
    std::transform(std::begin(kCapabilities), std::end(kCapabilities), capabilities, glIsEnabled);
    isScissored = glIsEnabledi(GL_SCISSOR_TEST, 0);
    glGetIntegerv(GL_DEPTH_FUNC, &depthFunction);
    glGetBooleanv(GL_DEPTH_WRITEMASK, &writesDepth);
    glGetIntegerv(GL_CULL_FACE_MODE, &culled);
    glGetIntegerv(GL_POLYGON_MODE, polygonModes);
    for (int output = 0; output < RenderState::kMaxBlends; ++output)
        outputs[output].save(static_cast<GLuint>(output), next.blends.value(output));
}

void ScopedRenderState::Data::apply(const RenderState& state) {
    for (const GLenum off : {GL_STENCIL_TEST, GL_COLOR_LOGIC_OP, GL_RASTERIZER_DISCARD})
        glDisable(off);
    glDisablei(GL_SCISSOR_TEST, 0);
    glEnable(GL_MULTISAMPLE);
    setEnabled(GL_DEPTH_TEST, state.depthTest != RenderState::DepthTest::Off);
    glDepthFunc(comparison(state.depthTest));
    glDepthMask(state.writesDepth ? GL_TRUE : GL_FALSE);
    setEnabled(GL_CULL_FACE, state.sides != RenderState::Sides::Both);
    glCullFace(state.sides == RenderState::Sides::Back ? GL_FRONT : GL_BACK);
    glPolygonMode(GL_FRONT_AND_BACK, polygonMode(state.fill));
    for (int output = 0; output < RenderState::kMaxBlends; ++output)
        OutputState::apply(static_cast<GLuint>(output), state.blends.value(output));
}

void ScopedRenderState::Data::restore() const {
    for (int i = 0; i < kCapabilityCount; ++i)
        setEnabled(kCapabilities[i], capabilities[i]);
    setEnabledAt(GL_SCISSOR_TEST, 0, isScissored);
    glDepthFunc(static_cast<GLenum>(depthFunction));
    glDepthMask(writesDepth);
    glCullFace(static_cast<GLenum>(culled));
    glPolygonMode(GL_FRONT_AND_BACK, static_cast<GLenum>(polygonModes[0]));
    if (polygonModes[1] != 0 && polygonModes[1] != polygonModes[0])
        glPolygonMode(GL_BACK, static_cast<GLenum>(polygonModes[1]));
    for (GLuint output = 0; output < RenderState::kMaxBlends; ++output)
        outputs[output].restore(output);
}

ScopedRenderState::ScopedRenderState(const RenderState& state) : _data(std::make_unique<Data>()) {
    const ContextGL* gl = enterCurrentContext();
    if (!gl)
        return;
    _data->context = gl->serial();
    _data->save(state);
    Data::apply(state);
}

ScopedRenderState::~ScopedRenderState() {
    const ContextGL* gl = findKnownContext();
    if (gl && gl->serial() == _data->context)
        _data->restore();
}

} // namespace Atelier::Vel
