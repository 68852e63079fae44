#pragma once

#include <ostream>
#include <string>
#include <vector>

#include <QtCore/QtGlobal>

namespace Atelier::Vel::Testing {

/// The OpenGL state that VelGL's calls could disturb, by name. Requires: a current context.
class ClientState {
public:
    /// What is set now.
    static ClientState captured();

    friend bool operator==(const ClientState& a, const ClientState& b) { return a._values == b._values; }
    friend void PrintTo(const ClientState& state, std::ostream* out);
    /// "name: before -> after" for all that differs.
    static std::string difference(const ClientState& before, const ClientState& after);

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

    std::vector<Value> _values;
};

/// Sets client state that differs from the defaults everywhere, and frees what it made for that. Pixels are
/// stored by the defaults again then.
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
    /// `rows` is for lengths and skips, `flag` for the order of bytes and bits.
    static void setPixelStore(int rows, int flag, int unpackAlignment, int packAlignment);
    void setVertexArray();
    void useProgram();

    unsigned int _buffers[kBufferCount] = {};
    unsigned int _textures[kUnitCount] = {};
    unsigned int _cubes[kUnitCount] = {};
    unsigned int _samplers[kUnitCount] = {};
    unsigned int _vertexArray = 0;
    unsigned int _program = 0;
};

} // namespace Atelier::Vel::Testing
