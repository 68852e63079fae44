// Decodes the input into a sequence of calls to a builder. The streams are a client's: they check every
// access, and some cannot be made or differ from the request.
#include <cstddef>
#include <cstdint>
#include <vector>

#include <velgl/gpumodel.h>
#include <velgl/opengldevicecontext.h>
#include <velmodel/modelbuilder.h>

#include "bytesource.h"
#include "checkingcontext.h"
#include "claim.h"
#include "support/clientstreams.h"

using namespace Atelier::Vel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

constexpr unsigned int kFloat = 0x1406;
// Floats, the usual type, three times; 0 is not a type.
constexpr unsigned int kTypes[] = {kFloat, kFloat, kFloat, 0x1400, 0x1401, 0x1402,
                                   0x1403, 0x1404, 0x1405, 0x140A, 0};
constexpr unsigned int kMaxElements = 32;
constexpr int kMaxUploads = 4;
// Corner counts read as 32 bits from 16-bit streams are large. This limits the work that they cause.
constexpr quint64 kMaxStreamElements = 1 << 14;
// More than a stream of the library holds.
constexpr quint64 kTooManyElements = quint64{1} << 31;

/// Makes no stream, or one that reports wrong facts, for requests that the bits of the input select. For some
/// inputs, every stream of 32-bit indices has 16 bits.
class FickleAllocator : public ModelDataStreamAllocator {
public:
    explicit FickleAllocator(Fuzzing::ByteSource& source) : _liars(source.take<quint32>()) {
        constexpr std::size_t kLieCount = sizeof Testing::kLies / sizeof *Testing::kLies;
        const std::size_t byte = source.take<std::uint8_t>();
        // In one of eight inputs, faulty streams are not missing but report wrong facts. In a few of these,
        // all index streams are short instead.
        if (byte % 8 == 7) {
            _hasShortIndices = byte / 8 == 0;
            _lie = _hasShortIndices ? Testing::Lie::Missing : Testing::kLies[byte / 8 % kLieCount];
        }
    }

    ModelDataStream* alloc(unsigned int type, quint64 count) override {
        const bool lies = (_liars >> (_asked++ % 32) & 1) != 0;
        if ((lies && _lie == Testing::Lie::Missing) || count > kMaxStreamElements)
            return nullptr;
        if (lies)
            return new Testing::LyingStream<Testing::PlainStream>(_lie, type, count);
        return _hasShortIndices ? _shortIndices.alloc(type, count) : _plain.alloc(type, count);
    }

    /// Whether the result must be drawable.
    bool isFaithful() const { return !_hasShortIndices; }

private:
    quint32 _liars;
    Testing::Lie _lie = Testing::Lie::Missing;
    bool _hasShortIndices = false;
    unsigned int _asked = 0;
    Testing::PlainAllocator _plain;
    Testing::ShortIndexAllocator _shortIndices;
};

/// One builder and the calls to it.
class Session {
public:
    explicit Session(Fuzzing::ByteSource& source)
        : _source(source),
          _allocator(source.below(4) == 0 ? nullptr : new FickleAllocator(source)),
          _builder(_allocator, source.below(4)) {}

    /// The number of uploads is limited: more of them find nothing new and take most of the time.
    bool isOver() const { return _source.isEmpty() || _uploads == kMaxUploads; }
    void callNext();

private:
    QString oneOf(const char* names, unsigned int count) {
        return QString(QLatin1Char(names[_source.below(count)]));
    }
    QString attribute() { return oneOf("pntx", 4); }
    QString group() { return oneOf("abc", 3); }
    quint64 elementCount() {
        return _source.below(64) == 63 ? kTooManyElements : _source.below(kMaxElements);
    }
    /// Less than kMaxElements numbers, most of them less than `bound`.
    std::vector<unsigned int> numbers(unsigned int bound);

    void createAttribute();
    void addValues();
    void createGroup();
    void addFacesToGroup();
    void ask();
    void clear();
    void upload();

    Fuzzing::ByteSource& _source;
    QSharedPointer<FickleAllocator> _allocator;
    ModelBuilder _builder;
    int _uploads = 0;
    bool _isOrdinary = true; ///< the result must be drawable
};

std::vector<unsigned int> Session::numbers(unsigned int bound) {
    // The sum of a few of them, modulo 2^32, is never a corner count that takes gigabytes.
    constexpr unsigned int kOdd[] = {0xFFFFFFFF, 0x80000000, 0x7FFFFFFF};
    std::vector<unsigned int> result(_source.below(kMaxElements));
    for (unsigned int& number : result) {
        const unsigned int byte = _source.take<std::uint8_t>();
        number = byte < 253 ? byte % bound : kOdd[byte - 253];
    }
    return result;
}

void Session::createAttribute() {
    const QString name = attribute();
    const unsigned int type = kTypes[_source.below(sizeof kTypes / sizeof *kTypes)];
    const int components = static_cast<int>(_source.below(6)) - 1;
    if (components < 1 || type == 0)
        _isOrdinary = false;
    const quint64 valueCount = _source.below(4) == 0 ? elementCount() : 0;
    const quint64 indexCount = _source.below(4) == 0 ? elementCount() : 0;
    _builder.createVertexAttribute(name, components, type, valueCount, indexCount);
}

void Session::addValues() {
    const QString name = attribute();
    const unsigned int type = kTypes[_source.below(sizeof kTypes / sizeof *kTypes)];
    const quint64 count = _source.below(kMaxElements);
    std::vector<std::uint8_t> bytes(count * ModelDataStream::typeSize(type));
    for (std::uint8_t& byte : bytes)
        byte = _source.take<std::uint8_t>();
    _builder.addValuesToVertexAttribute(name, count, bytes.data(), type);
}

void Session::createGroup() {
    InstanceData material(QStringLiteral("m"));
    const float value = _source.take<float>();
    material.set(QStringLiteral("value"), &value, sizeof value);
    const QString name = group();
    const int id = static_cast<int>(_source.below(256)) - 128;
    _builder.createMaterialGroup(name, material, id, _source.below(8));
}

void Session::addFacesToGroup() {
    const std::vector<unsigned int> faces = numbers(24);
    const QString object = _source.below(2) == 0 ? QString() : attribute();
    const QString name = group();
    const bool isThere = _builder.hasMaterialGroup(name);
    Fuzzing::require(_builder.addFacesToMaterialGroup(name, faces.size(), faces.data(), object) == isThere,
                     "faces join the groups that there are");
}

void Session::ask() {
    const QString name = group();
    const bool isThere = _builder.hasMaterialGroup(name);
    Fuzzing::require(isThere || _builder.materialGroupId(name) == -1, "a group that is not there has no id");
    Fuzzing::require(isThere || _builder.materialGroupFlags(name) == 0,
                     "a group that is not there has no flags");
    _builder.removeDuplicateVertices();
    _builder.removeUnusedVertices();
}

void Session::clear() {
    _builder.clear();
    Fuzzing::require(!_builder.isValid() && _builder.refusedStreams().isEmpty(),
                     "a cleared builder holds nothing");
    _isOrdinary = true;
}

void Session::upload() {
    const QString positions = attribute();
    const QString idMember = _source.below(2) == 0 ? QString() : QStringLiteral("id");
    const bool canUpload = _builder.isValid() && _builder.hasVertexAttribute(positions);
    ++_uploads;
    GPUModel model;
    _builder.upload(&model, InstanceData(QStringLiteral("i")), positions, idMember, 0x88E4, 4);
    Fuzzing::require(canUpload || model.drawableCount() == 0,
                     "nothing comes out of a builder that is not valid");
    if (_isOrdinary && (_allocator.isNull() || _allocator->isFaithful()))
        Fuzzing::requireDrawable(model);
    model.bounds(positions);
}

void Session::callNext() {
    switch (_source.below(12)) {
    case 0:
        return createAttribute();
    case 1:
    case 2:
        return addValues();
    case 3:
    case 4: {
        const std::vector<unsigned int> indices = numbers(24);
        return _builder.addIndicesToVertexAttribute(attribute(), indices.size(), indices.data());
    }
    case 5: {
        const std::vector<unsigned int> counts = numbers(7);
        return _builder.addVertexCountsToFaces(counts.size(), counts.data());
    }
    case 6:
        return createGroup();
    case 7:
        return addFacesToGroup();
    case 8:
        return ask();
    case 9:
        return _source.below(8) == 0 ? clear() : upload();
    case 10:
        return upload();
    default:
        return _builder.generateNormals(_source.below(4) == 0 ? QString() : attribute());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    OpenGLDeviceContext::setCurrent(Fuzzing::makeCheckingContext());
    Fuzzing::ByteSource source(data, size);
    Session session(source);
    while (!session.isOver())
        session.callNext();
    return 0;
}
