#pragma once

namespace Atelier::Vel {

/// How pixels lie in client memory: plain rows while it lives, and the client's settings again afterwards,
/// the buffer that pixels are read from or written to included.
class ScopedPixelStore {
public:
    enum class Direction { Pack, Unpack };
    /// The unpack alignment that counts while it lives: VelGL's own of 4, or what the client has set.
    enum class Alignment { Plain, Client };

    explicit ScopedPixelStore(Direction direction, Alignment alignment = Alignment::Plain);
    ~ScopedPixelStore();
    ScopedPixelStore(const ScopedPixelStore&) = delete;
    ScopedPixelStore& operator=(const ScopedPixelStore&) = delete;

private:
    static constexpr int kSettingCount = 8;

    Direction _direction;
    int _settings[kSettingCount] = {};
    unsigned int _buffer = 0;
};

} // namespace Atelier::Vel
