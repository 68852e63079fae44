#include <velgl/texturetoken.h>

#include <atomic>

namespace Atelier::Vel {

TextureToken::TextureToken() {
    static std::atomic<quint64> lastValue = 0;
    _value = ++lastValue;
}

} // namespace Atelier::Vel
