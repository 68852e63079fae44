#include "loadcontroller.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QStringList>
#include <QtCore/QTemporaryDir>

#include <gmock/gmock.h>

namespace Atelier::Vel::Viewer::Testing {

using ::testing::ElementsAre;

class LoadControllerTest : public ::testing::Test {
public:
    LoadControllerTest() { follow(controller); }

    void follow(LoadController& loads) {
        QObject::connect(&loads, &LoadController::started, [this](const QString& path) {
            events.append("started " + QFileInfo(path).fileName());
        });
        QObject::connect(&loads, &LoadController::finished,
                         [this](const std::shared_ptr<ReadModel>& model, LoadPurpose purpose) {
                             events.append((purpose == LoadPurpose::Reload ? "reloaded " : "finished ") +
                                           QFileInfo(model->path).fileName());
                         });
        QObject::connect(&loads, &LoadController::failed,
                         [this](const QString& error) { events.append("failed " + error); });
        QObject::connect(&loads, &LoadController::cancelled, [this] { events.append("cancelled"); });
    }
    QString triangle(const QString& name, int copies = 1) const {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        for (int copy = 0; copy < copies; ++copy)
            file.write("v 0 0 0\nv 1 0 0\nv 0 1 0\nf -1 -2 -3\n");
        return file.fileName();
    }
    static LoadRequest request(const QString& path) { return {path, LoadOptions::forgiving()}; }
    void waitForEnd() {
        QElapsedTimer timer;
        timer.start();
        while (controller.isLoading() && timer.elapsed() < 10'000)
            QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 10);
        EXPECT_FALSE(controller.isLoading());
    }

    QTemporaryDir folder;
    LoadController controller;
    QStringList events;
};

TEST_F(LoadControllerTest, ALoadStartsAndFinishes) {
    controller.start(request(triangle("a.obj")), LoadPurpose::Open);
    EXPECT_EQ(controller.path(), folder.filePath("a.obj"));
    waitForEnd();
    EXPECT_THAT(events, ElementsAre(QString("started a.obj"), QString("finished a.obj")));
    EXPECT_TRUE(controller.path().isNull());
}

TEST_F(LoadControllerTest, ReloadsSaySo) {
    controller.start(request(triangle("a.obj")), LoadPurpose::Reload);
    waitForEnd();
    EXPECT_THAT(events, ElementsAre(QString("started a.obj"), QString("reloaded a.obj")));
}

TEST_F(LoadControllerTest, AFailureSaysWhy) {
    controller.start(request("/no/such.obj"), LoadPurpose::Open);
    waitForEnd();
    EXPECT_THAT(events, ElementsAre(QString("started such.obj"),
                                    QString("failed Failed to load OBJ file '/no/such.obj': No such file")));
}

TEST_F(LoadControllerTest, ALoadCanBeCancelled) {
    controller.start(request(triangle("a.obj", 50'000)), LoadPurpose::Open);
    controller.cancel();
    waitForEnd();
    EXPECT_THAT(events, ElementsAre(QString("started a.obj"), QString("cancelled")));
    controller.cancel(); // nothing to cancel
}

TEST_F(LoadControllerTest, ANewLoadReplacesTheOldOne) {
    controller.start(request(triangle("a.obj", 50'000)), LoadPurpose::Open);
    controller.start(request(triangle("b.obj")), LoadPurpose::Open);
    waitForEnd();
    EXPECT_THAT(events,
                ElementsAre(QString("started a.obj"), QString("started b.obj"), QString("finished b.obj")));
}

TEST_F(LoadControllerTest, TheDestructorDoesNotWaitLong) {
    const QString path = triangle("a.obj", 200'000);
    QElapsedTimer timer;
    {
        LoadController loads;
        loads.start(request(path), LoadPurpose::Open);
        timer.start();
    }
    EXPECT_LT(timer.elapsed(), LoadController::kMaxWaitMilliseconds + 150);
    while (RunningWork::count() > 0 && timer.elapsed() < 10'000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    EXPECT_EQ(RunningWork::count(), 0);
}

} // namespace Atelier::Vel::Viewer::Testing
