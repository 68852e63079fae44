#include <QtCore/QCoreApplication>
#include <QtCore/QHashFunctions>
#include <QtCore/QMessageLogger>

extern "C" int LLVMFuzzerInitialize(int* argumentCount, char*** arguments);

namespace {

void ignore(QtMsgType /*level*/, const QMessageLogContext& /*context*/, const QString& /*text*/) {}

} // namespace

// The same input does the same in every process, and the library's messages cost no time.
extern "C" int LLVMFuzzerInitialize(int* argumentCount, char*** arguments) {
    static const QCoreApplication application(*argumentCount, *arguments);
    qSetGlobalQHashSeed(0);
    qInstallMessageHandler(ignore);
    return 0;
}
