#pragma once

#include <ostream>
#include <string>
#include <vector>

#include <QtCore/QtGlobal>

namespace Atelier::Vel::Testing {

/// A copy of the OpenGL state that calls of VelGL might change.
/// Requires: a current context.
class ClientState {
public:
    /// Returns: the current state.
    static ClientState captured();

    friend bool operator==(const ClientState& a, const ClientState& b) { return a._values == b._values; }
    friend void PrintTo(const ClientState& state, std::ostream* out);
    /// Returns: "name: before -> after" for each value that differs; empty if none does.
    static std::string difference(const ClientState& before, const ClientState& after);
    /// Returns: the names of the values that differ.
    static std::vector<std::string> changes(const ClientState& before, const ClientState& after);

private:
    struct Value {
        std::string name;
        qint64 value;
        friend bool operator==(const Value& a, const Value& b) {
            return a.name == b.name && a.value == b.value;
        }
    };

    void addIntegers();
    void addVertexArray();
    void addTextureUnits();
    void addStorageBindings();
    void addDebugReceiver();
    void addViewports();
    void addOutputs();

    std::vector<Value> _values;
};

/// A client that has changed each state from its default. On destruction it frees the objects that it made
/// and restores the default pixel store parameters and primitive restart.
class BusyClient {
public:
    BusyClient();
    ~BusyClient();
    BusyClient(const BusyClient&) = delete;
    BusyClient& operator=(const BusyClient&) = delete;

private:
    static constexpr int kBufferCount = 13;
    static constexpr int kUnitCount = 6;

    void bindBuffers();
    void bindTextures();
    /// `rows` is the value of row lengths and skips, `flag` that of the byte and bit order.
    static void setPixelStore(int rows, int flag, int unpackAlignment, int packAlignment);
    void setVertexArray();
    static void setPrimitiveRestart(unsigned int index, bool isEnabled);
    void useProgram();

    unsigned int _buffers[kBufferCount] = {};
    unsigned int _textures[kUnitCount] = {};
    unsigned int _cubes[kUnitCount] = {};
    unsigned int _samplers[kUnitCount] = {};
    unsigned int _vertexArray = 0;
    unsigned int _program = 0;
};

/// A client that has changed how it draws from the defaults: tests, masks, blending, the viewport and the
/// bound framebuffers, into which nothing can be drawn. On destruction it restores the defaults; the viewport
/// is empty then.
class BusyPainter {
public:
    BusyPainter();
    ~BusyPainter();
    BusyPainter(const BusyPainter&) = delete;
    BusyPainter& operator=(const BusyPainter&) = delete;

private:
    unsigned int _framebuffers[2] = {}; // for drawing and for reading
    unsigned int _renderbuffer = 0;
};

} // namespace Atelier::Vel::Testing
