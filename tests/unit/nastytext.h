#pragma once

#include <random>

#include <QtCore/QByteArray>
#include <QtCore/QList>

namespace Atelier::Vel::Testing {

/// Makes awkward OBJ and MTL text: every odd case that is known, in any order, in several encodings.
class NastyText {
public:
    explicit NastyText(unsigned int seed) : _random(seed) {}

    unsigned int below(unsigned int bound);
    /// OBJ text of up to `lines` lines, as UTF-8.
    QByteArray obj(unsigned int lines);
    /// The same without anything odd.
    QByteArray plain(unsigned int lines);
    /// A short decimal, up to 20 digits in all.
    QByteArray decimal();
    /// The names of materials and files that both kinds of text use.
    static QList<QByteArray> names();
    /// MTL text of up to `lines` lines, as UTF-8.
    QByteArray mtl(unsigned int lines);
    /// Bytes without any sense.
    QByteArray noise(unsigned int bytes);
    /// Pieces of UTF-8 sequences, whole ones and others.
    QByteArray foreign(unsigned int pieces);
    /// The text with a few bytes changed, taken out or put in.
    QByteArray damaged(QByteArray text);
    /// The text in another encoding, with or without a byte-order mark.
    QByteArray encoded(const QByteArray& utf8);

private:
    QByteArray anyOf(std::initializer_list<const char*> choices);
    QByteArray separator();
    QByteArray lineEnd();
    QByteArray number();
    QByteArray corner();
    QByteArray name();
    /// Of some position lines.
    QByteArray plainColour();
    QByteArray plainLine();
    QByteArray objLine();
    QByteArray mtlLine();

    std::mt19937 _random;
};

} // namespace Atelier::Vel::Testing
