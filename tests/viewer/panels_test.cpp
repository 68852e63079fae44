#include <algorithm>

#include <QtGui/QClipboard>
#include <QtGui/QImage>
#include <QtTest/QTest>
#include <QtWidgets/QAction>
#include <QtWidgets/QApplication>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSlider>
#include <QtWidgets/QTreeWidget>

#include "materialpanel.h"
#include "modelstatistics.h"
#include "partspanel.h"
#include "problemsfinder.h"
#include "problemspanel.h"
#include "shownmodel.h"
#include "statisticspanel.h"
#include "textureswatches.h"
#include "viewerfixture.h"

namespace Atelier::Vel::Viewer::Testing {

class PanelsTest : public ViewerTest {
public:
    PanelsTest() : window(makeWindow()), view(window.view()), tree(window.parts().tree()) {
        write("m.mtl", "newmtl red\nKd 1 0 0\nNs 30\nnewmtl blue\nKd 0 0 1\nd 0.75\nmap_Kd gone.png\n");
        open(window,
             write("parts.obj", "mtllib m.mtl\nv -2 -1 0\nv -2 1 0\nv 0 -1 0\nv 0 1 0\nv 2 -1 0\nv 2 1 0\n"
                                "o left\nusemtl red\nf 1 3 4 2\no right\nusemtl red\nf 3 5 6\n"
                                "usemtl blue\nf 3 6 4\n"));
        takeWarnings(); // of the missing texture
        press(window, Qt::Key_1);
        window.actions()[ActionId::Parts]->trigger();
    }
    ~PanelsTest() override { takeWarnings(); }

    /// The texts of the tree, with a level of dots.
    QStringList texts() const {
        QStringList lines;
        for (int group = 0; group < tree.topLevelItemCount(); ++group) {
            lines.append(tree.topLevelItem(group)->text(0));
            for (int part = 0; part < tree.topLevelItem(group)->childCount(); ++part)
                lines.append("." + tree.topLevelItem(group)->child(part)->text(0) + " " +
                             tree.topLevelItem(group)->child(part)->text(1));
        }
        return lines;
    }
    static QBitArray bits(const char* digits) {
        QBitArray made(int(qstrlen(digits)));
        for (int bit = 0; bit < made.size(); ++bit)
            made.setBit(bit, digits[bit] == '1');
        return made;
    }

    ViewerWindow& window;
    ModelView& view;
    QTreeWidget& tree;
};

TEST_F(PanelsTest, PartsAreListedByObjectOrByMaterial) {
    EXPECT_EQ(texts(), QStringList({"left", ".red 2", "right", ".red 1", ".blue 1"}));
    window.parts().grouping().setCurrentIndex(1);
    EXPECT_EQ(texts(), QStringList({"red", ".left 2", ".right 1", "blue", ".right 1"}));
}

TEST_F(PanelsTest, ACheckedPartIsVisible) {
    const QImage before = picture(window);
    tree.topLevelItem(0)->child(0)->setCheckState(0, Qt::Unchecked);
    EXPECT_EQ(view.model()->visible(), bits("011"));
    EXPECT_GT(difference(before, picture(window)), 0.02);
    tree.topLevelItem(0)->child(0)->setCheckState(0, Qt::Checked);
    EXPECT_LT(difference(before, picture(window)), kSame);
}

TEST_F(PanelsTest, AGroupIsHiddenAsAWhole) {
    tree.topLevelItem(1)->setCheckState(0, Qt::Unchecked);
    EXPECT_EQ(view.model()->visible(), bits("100"));
}

TEST_F(PanelsTest, TheSelectionOfTheListAndTheViewAreOne) {
    tree.topLevelItem(1)->setSelected(true);
    EXPECT_EQ(view.model()->selected(), bits("011"));
    tree.clearSelection();
    QTest::mouseClick(&view, Qt::LeftButton, {}, view.camera().windowPoint({-1, 0, 0}).toPoint());
    EXPECT_EQ(view.model()->selected(), bits("100"));
    EXPECT_TRUE(tree.topLevelItem(0)->child(0)->isSelected());
}

TEST_F(PanelsTest, SelectedPartsAreHiddenIsolatedAndShown) {
    tree.topLevelItem(1)->child(1)->setSelected(true);
    press(window, Qt::Key_Delete);
    EXPECT_EQ(view.model()->visible(), bits("110"));
    EXPECT_EQ(tree.topLevelItem(1)->child(1)->checkState(0), Qt::Unchecked);
    EXPECT_FALSE(view.model()->hasSelection());
    press(window, Qt::Key_A);
    EXPECT_EQ(view.model()->visible(), bits("111"));
    tree.topLevelItem(0)->child(0)->setSelected(true);
    press(window, Qt::Key_I);
    EXPECT_EQ(view.model()->visible(), bits("100"));
}

TEST_F(PanelsTest, SelectedPartsAreFramed) {
    tree.topLevelItem(0)->child(0)->setSelected(true);
    press(window, Qt::Key_Z);
    EXPECT_LT((view.camera().target() - QVector3D(-1, 0, 0)).length(), 0.01F);
    tree.clearSelection();
    press(window, Qt::Key_Z);
    EXPECT_LT(view.camera().target().length(), 0.01F);
    emit tree.itemDoubleClicked(tree.topLevelItem(0), 0);
}

TEST_F(PanelsTest, TheMaterialOfTheSelectionIsShown) {
    const MaterialPanel& panel = window.parts().material();
    EXPECT_FALSE(panel.isVisible());
    tree.topLevelItem(0)->child(0)->setSelected(true);
    EXPECT_TRUE(panel.isVisible());
    EXPECT_EQ(panel.values().diffuse, QColor(Qt::red));
    EXPECT_FLOAT_EQ(panel.values().shininess, 30);
    tree.clearSelection();
    EXPECT_FALSE(panel.isVisible());
    tree.topLevelItem(1)->child(1)->setSelected(true);
    EXPECT_FLOAT_EQ(panel.values().opacity, 0.75);
    EXPECT_EQ(panel.opacity().value(), 75);
}

TEST_F(PanelsTest, AMaterialChangesWhileOneLooks) {
    MaterialPanel& panel = window.parts().material();
    tree.topLevelItem(0)->child(0)->setSelected(true);
    view.model()->setSelected(bits("000"));
    const QImage before = picture(window);
    view.model()->setSelected(bits("100"));
    const auto changed = [&] {
        view.model()->setSelected(bits("000"));
        const double part = difference(before, picture(window));
        view.model()->setSelected(bits("100"));
        return part;
    };
    panel.setColour(Qt::green);
    EXPECT_GT(changed(), 0.02);
    const auto swatchOf = [&](int group, int part) {
        return tree.topLevelItem(group)->child(part)->icon(0).pixmap(14).toImage().pixelColor(7, 7);
    };
    EXPECT_EQ(swatchOf(0, 0), QColor(Qt::green));
    EXPECT_EQ(swatchOf(1, 0), QColor(Qt::green)) << "another part of this material";
    EXPECT_EQ(swatchOf(1, 1), QColor(Qt::blue));
    EXPECT_EQ(view.model()->material(0).values.diffuse, QColor(Qt::green));
    panel.setColour(Qt::red);
    EXPECT_LT(changed(), kSame);
    panel.opacity().setValue(20);
    EXPECT_GT(changed(), 0.02);
    EXPECT_FLOAT_EQ(view.model()->material(0).values.opacity, 0.2F);
    panel.opacity().setValue(100);
    EXPECT_LT(changed(), kSame);
    panel.shininess().setValue(100);
    EXPECT_NEAR(double(view.model()->material(0).values.shininess), 1000, 1);
    EXPECT_FLOAT_EQ(view.model()->material(1).values.opacity, 0.75F) << "other materials stay";
}

TEST_F(PanelsTest, AMissingTextureIsRedWithThePathsThatWereTried) {
    tree.topLevelItem(1)->child(1)->setSelected(true);
    EXPECT_EQ(tree.topLevelItem(1)->child(1)->foreground(0).color(), QColor(205, 45, 45));
    EXPECT_TRUE(window.parts().material().text().contains("map_Kd is missing. Tried:\n" + path("gone.png")));
    keep(window, "missing-texture");
}

TEST_F(PanelsTest, MaterialsHaveSwatchesOfTheirTextures) {
    QImage image(128, 128, QImage::Format_RGB32);
    image.fill(QColor(0, 200, 0));
    ASSERT_TRUE(image.save(path("green.png")));
    write("t.mtl", "newmtl grown\nKd 1 0 0\nmap_Kd green.png\nnewmtl bare\nKd 0 0 1\nmap_Ks green.png\n");
    open(window, write("t.obj", "mtllib t.mtl\nv -1 -1 0\nv 1 -1 0\nv 0 1 0\nusemtl grown\nf 1 2 3\n"
                                "usemtl bare\nf 1 3 2\n"));
    EXPECT_TRUE(waitUntil([&] { return !window.parts().swatches().at(path("green.png")).isNull(); }));
    const auto iconOf = [&](int part) {
        const QIcon icon = tree.topLevelItem(0)->child(part)->icon(0);
        return icon.pixmap(icon.availableSizes().value(0)).toImage();
    };
    const QImage both = iconOf(0);
    EXPECT_GT(both.width(), 2 * both.height());
    EXPECT_EQ(both.pixelColor(both.height() / 2, both.height() / 2), QColor(Qt::red));
    EXPECT_EQ(both.pixelColor(both.width() - 2, both.height() / 2), QColor(0, 200, 0));
    EXPECT_EQ(iconOf(1).width(), iconOf(1).height()) << "a map of highlights is not shown";
    tree.topLevelItem(0)->child(1)->setSelected(true);
    const auto labels = window.parts().material().findChildren<QLabel*>();
    const bool hasPicture = std::any_of(labels.begin(), labels.end(), [](const QLabel* label) {
        const QImage picture = label->pixmap(Qt::ReturnByValue).toImage();
        return !picture.isNull() && picture.pixelColor(9, 9) == QColor(0, 200, 0);
    });
    EXPECT_TRUE(hasPicture);
    keep(window, "texture-swatches");
}

TEST_F(PanelsTest, AReloadKeepsHiddenPartsSelectionAndMaterials) {
    tree.topLevelItem(0)->child(0)->setCheckState(0, Qt::Unchecked);
    tree.topLevelItem(1)->child(1)->setSelected(true);
    window.parts().material().setColour(QColor(0, 128, 0));
    // The parts are in another order, and there is a new one.
    write("parts.obj", "mtllib m.mtl\nv -2 -1 0\nv -2 1 0\nv 0 -1 0\nv 0 1 0\nv 2 -1 0\nv 2 1 0\n"
                       "o right\nusemtl blue\nf 3 6 4\no new\nf 3 6 4\no left\nusemtl red\nf 1 3 4 2\n");
    press(window, Qt::Key_Up);
    waitForLoad(window);
    takeWarnings(); // of the missing texture
    EXPECT_EQ(texts(), QStringList({"right", ".blue 1", "new", ".blue 1", "left", ".red 2"}));
    EXPECT_EQ(view.model()->visible(), bits("110"));
    EXPECT_EQ(view.model()->selected(), bits("100"));
    EXPECT_EQ(view.model()->material(0).values.diffuse, QColor(0, 128, 0));
    EXPECT_EQ(view.model()->material(1).values.diffuse, QColor(Qt::red));
    EXPECT_EQ(window.parts().material().values().diffuse, QColor(0, 128, 0));
    view.model()->setSelected(bits("000"));
    const QColor shown = picture(window).pixelColor(view.camera().windowPoint({0.4F, 0.3F, 0}).toPoint());
    EXPECT_GT(shown.green(), shown.red() + 50) << shown.name().toStdString();
    open(window, path("parts.obj"));
    takeWarnings();
    EXPECT_EQ(view.model()->visible(), bits("111")) << "a file that is opened begins anew";
}

TEST_F(PanelsTest, StatisticsHaveTheFiguresOfTheModel) {
    window.actions()[ActionId::Statistics]->trigger();
    waitForFrame(window);
    const StatisticsPanel& panel = window.statistics();
    EXPECT_EQ(panel.value("Triangles"), "4");
    EXPECT_EQ(panel.value("Faces"), "3");
    EXPECT_EQ(panel.value("Vertices before merging"), "10");
    EXPECT_EQ(panel.value("Vertices after merging"), "6");
    EXPECT_EQ(panel.value("Draws"), "3");
    EXPECT_EQ(panel.value("Materials"), "2");
    EXPECT_FALSE(panel.value("Reading").isEmpty());
    EXPECT_TRUE(panel.value("Frame").contains(" ms, "));
    // Positions, normals, and the colours of vertices that this file lacks; 12 indices of 16 bits.
    EXPECT_EQ(gpuBytes(*view.model()), 6U * (12 + 12) + 12 * 2);
}

TEST_F(PanelsTest, ProblemsAreFoundFramedAndCopied) {
    open(window,
         write("bad.obj",
               "v -1 -1 0\nv 1 -1 0\nv 1 1 0\nv 7 0 0\nv 8 0 0\nv 9 0 0\nf 1 2 3\nf 4 5 6\nf 1 2 99\n"));
    window.actions()[ActionId::Problems]->trigger();
    EXPECT_TRUE(waitUntil([&] { return !window.finder().isRunning(); }));
    ProblemsPanel& panel = window.problems();
    const QString text = panel.text();
    EXPECT_TRUE(text.contains(path("bad.obj") + ":9")) << text.toStdString();
    EXPECT_TRUE(text.contains("[face-index-out-of-range]")) << text.toStdString();
    keep(window, "problems");
    bool isMarked = false;
    for (int line = 0; line < panel.list().topLevelItemCount(); ++line) {
        QTreeWidgetItem* const item = panel.list().topLevelItem(line);
        if (item->text(2) == "face-degenerate") {
            emit panel.list().itemClicked(item, 0);
            isMarked = true;
        }
    }
    ASSERT_TRUE(isMarked) << text.toStdString();
    ASSERT_EQ(view.marks().outlines.size(), 1);
    EXPECT_LT((view.camera().target() - QVector3D(8, 0, 0)).length(), 0.1F);
    keep(window, "problem-marked");
    panel.findChild<QPushButton*>()->click();
    EXPECT_EQ(QApplication::clipboard()->text(), text);
}

TEST_F(PanelsTest, ASoundModelHasNoErrors) {
    open(window, write("square.obj", squareObj("1 0 0")));
    window.actions()[ActionId::Problems]->trigger();
    EXPECT_TRUE(waitUntil([&] { return !window.finder().isRunning(); }));
    EXPECT_FALSE(window.problems().text().contains("error:")) << window.problems().text().toStdString();
}

TEST_F(PanelsTest, PanelsMoveFloatAndComeBack) {
    window.actions()[ActionId::Statistics]->trigger();
    const QImage before = picture(window);
    auto* const panel = qobject_cast<QDockWidget*>(window.parts().parentWidget());
    ASSERT_NE(panel, nullptr);
    panel->setFloating(true);
    waitForFrame(window);
    EXPECT_TRUE(panel->isFloating() && panel->isVisible());
    for (const Qt::DockWidgetArea area :
         {Qt::LeftDockWidgetArea, Qt::BottomDockWidgetArea, Qt::RightDockWidgetArea}) {
        panel->setFloating(false);
        window.addDockWidget(area, panel);
        QCoreApplication::processEvents();
        EXPECT_GT(difference(picture(window), QImage(view.size(), QImage::Format_RGB32)), 0.5);
        EXPECT_EQ(window.dockWidgetArea(panel), area);
    }
    panel->close();
    EXPECT_FALSE(window.actions()[ActionId::Parts]->isChecked());
}

TEST_F(PanelsTest, ANewModelFillsThePanels) {
    open(window, write("other.obj", squareObj("1 0 0")));
    EXPECT_EQ(texts().size(), 2);
    waitForFrame(window);
    EXPECT_EQ(window.statistics().value("Triangles"), "2");
}

} // namespace Atelier::Vel::Viewer::Testing
