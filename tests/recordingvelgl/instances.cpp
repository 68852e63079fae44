#include <velgl/instancedata.h>
#include <velgl/instancedatacollection.h>
#include <velgl/instancedataplan.h>
#include <velgl/instancedataregistry.h>

#include <cstring>

#include <velgl/texture.h>

#include "callrecord.h"

namespace Atelier::Vel {

using Testing::CallRecord;
using Testing::quoted;
using Testing::recordCall;

namespace {

// Small 32-bit words are integers, others are floats: the floats in tests are never that small.
QString wordText(const char* bytes) {
    constexpr quint32 kIntegers = 0x10000;
    quint32 word = 0;
    float real = 0;
    std::memcpy(&word, bytes, sizeof word);
    std::memcpy(&real, bytes, sizeof real);
    return word < kIntegers ? QString::number(word) : QString::number(real);
}

QString valueText(const QByteArray& value) {
    constexpr int kWord = 4;
    if (value.size() % kWord != 0)
        return QString::fromLatin1(value.toHex());
    QStringList words;
    for (int i = 0; i < value.size(); i += kWord)
        words << wordText(value.constData() + i);
    return words.join(QLatin1Char(' '));
}

QString itemText(const InstanceData& item) {
    QStringList parts(item.name());
    for (const QString& member : item.valueNames())
        parts << QStringLiteral("%1 = %2").arg(member, valueText(item.value(member)));
    for (const QString& member : item.textureNames())
        parts << QStringLiteral("%1: %2").arg(
            member, item.texture(member) ? CallRecord::instance().nameOf(item.texture(member))
                                         : quoted(item.texturePath(member)));
    return QLatin1Char('{') + parts.join(QStringLiteral(", ")) + QLatin1Char('}');
}

void recordInstanceCall(const InstanceData& data, const QString& call) {
    CallRecord::instance().add(QStringLiteral("instance data %1: %2").arg(quoted(data.name()), call));
}

} // namespace

InstanceData::InstanceData(const QString& name) {
    if (name.isNull())
        return;
    ownContent().name = name;
    CallRecord::instance().add(QStringLiteral("new instance data ") + quoted(name));
}

const InstanceData::Content& InstanceData::content() const {
    static const Content nothing;
    return _content ? *_content : nothing;
}

InstanceData::Content& InstanceData::ownContent() {
    if (!_content)
        _content = new Content;
    return *_content;
}

void InstanceData::set(const QString& member, const void* data, unsigned long long size) {
    const QByteArray value(static_cast<const char*>(data), static_cast<int>(size));
    ownContent().values.insert(member, value);
    recordInstanceCall(*this, QStringLiteral("set %1 = %2").arg(quoted(member), valueText(value)));
}

void InstanceData::setTexture(const QString& member, const QString& path) {
    ownContent().textures.insert(member, {path, {}});
    recordInstanceCall(*this, QStringLiteral("setTexture %1, %2").arg(quoted(member), quoted(path)));
}

void InstanceData::setTexture(const QString& member, Texture* texture) {
    ownContent().textures.insert(member, {QString(), texture});
    recordInstanceCall(
        *this,
        QStringLiteral("setTexture %1, %2").arg(quoted(member), CallRecord::instance().nameOf(texture)));
}

Texture* InstanceData::texture(const QString& member) const {
    return content().textures.value(member).object;
}

void InstanceData::clear() {
    ownContent().values.clear();
    ownContent().textures.clear();
    recordInstanceCall(*this, QStringLiteral("clear"));
}

struct InstanceDataCollection::Data {};

InstanceDataCollection::InstanceDataCollection(const QString& name, const QList<InstanceData>& items)
    : _name(name), _items(items) {
    QStringList texts;
    for (const InstanceData& item : items)
        texts << itemText(item);
    CallRecord::instance().add(QStringLiteral("new %1, %2, %3")
                                   .arg(CallRecord::instance().number(this, QStringLiteral("collection")),
                                        quoted(name), texts.join(QLatin1Char(' '))));
}

InstanceDataCollection::~InstanceDataCollection() {
    CallRecord::instance().forget(this);
}

InstanceDataPlan::InstanceDataPlan(const QString& name) : _name(name) {
    CallRecord::instance().add(QStringLiteral("new plan ") + quoted(name));
}

void InstanceDataPlan::addMember(DataType type, const QString& name) {
    CallRecord::instance().add(
        QStringLiteral("plan %1: addMember %2, %3").arg(quoted(_name)).arg(int(type)).arg(quoted(name)));
}

struct InstanceDataRegistry::Data {
    QList<const InstanceDataPlan*> plans;
};

InstanceDataRegistry::InstanceDataRegistry() : _data(std::make_unique<Data>()) {}

InstanceDataRegistry& InstanceDataRegistry::Instance() {
    static auto* const registry = new InstanceDataRegistry;
    return *registry;
}

void InstanceDataRegistry::registerPlan(InstanceDataPlan* plan) {
    _data->plans.append(plan);
    CallRecord::instance().add(QStringLiteral("registerPlan ") + quoted(plan->name()));
}

} // namespace Atelier::Vel
