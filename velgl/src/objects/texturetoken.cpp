#include <velgl/texturetoken.h>

namespace Atelier::Vel {

TextureToken::TextureToken() {
    static quint64 lastValue = 0;
    _value = ++lastValue;
}

} // namespace Atelier::Vel
