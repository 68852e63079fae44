#include <QtCore/QCoreApplication>
#include <QtCore/QHashFunctions>
#include <QtCore/QMessageLogger>

extern "C" int LLVMFuzzerInitialize(int* argumentCount, char*** arguments);

namespace {

void ignore(QtMsgType /*level*/, const QMessageLogContext& /*context*/, const QString& /*text*/) {}

} // namespace

// Makes runs repeatable: hash seeds are fixed. Drops the messages of the library, which would cost time.
extern "C" int LLVMFuzzerInitialize(int* argumentCount, char*** arguments) {
    static const QCoreApplication application(*argumentCount, *arguments);
    qSetGlobalQHashSeed(0);
    qInstallMessageHandler(ignore);
    return 0;
}
