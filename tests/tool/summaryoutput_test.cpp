// A summary as text and as JSON: each number and name in its place.

#include <cmath>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

#include <gmock/gmock.h>

#include "modelsummary.h"
#include "support/messagelog.h"

namespace Atelier::Vel::Tool {

namespace {

// All numbers differ.
ModelSummary fullSummary() {
    ModelSummary summary;
    summary.file = "ship\n.obj";
    summary.report.bytesRead = 3000000;
    summary.report.statistics.corners = 101;
    summary.report.statistics.vertices = 102;
    summary.report.faces = 103;
    summary.report.statistics.triangles = 104;
    summary.report.droppedFaces = 105;
    summary.report.facesWithoutGroup = 106;
    summary.report.statistics.untriangulatedFaces = 107;
    summary.report.statistics.substitutedCorners = 108;
    summary.seconds = 0.125;
    summary.draws = 2;
    summary.commands = 3;
    summary.attributes = {{"va_Normal", 3, "GL_FLOAT"}, {"va\t", 2, "GL_SHORT"}};
    summary.materials = {
        {"steel", 1, {}},
        {"oak\n",
         2,
         {{"map_Kd", "/maps/oak.png", "found", {64, 32}}, {"map_Ks", "/maps/\tgone.png", "missing", {}}}}};
    summary.bounds = {{-1, -2, -3.5F}, {1, 2, 1e6F}, true};
    summary.gpuBytes = 4096;
    summary.cache = DrawData::VertexCacheStatistics{0.75F, 1.125F};
    summary.notes = QStringList{"One thing.", "Another."};
    return summary;
}

TEST(SummaryOutputTest, TextHasARowForEachFact) {
    EXPECT_EQ(summaryText(fullSummary()), "ship\\x0a.obj\n"
                                          "  vertices     101 before merging, 102 after\n"
                                          "  faces        103\n"
                                          "  triangles    104\n"
                                          "  draws        2 with 3 commands\n"
                                          "  attributes   va_Normal (3 x GL_FLOAT), va\\x09 (2 x GL_SHORT)\n"
                                          "  bounds       -1 -2 -3.5 to 1 2 1e+06\n"
                                          "  on the GPU   4096 bytes\n"
                                          "  ACMR         0.750 vertices transformed per triangle\n"
                                          "  ATVR         1.125 transformations per vertex\n"
                                          "  loaded in    125.00 ms (24.0 MB/s)\n"
                                          "  materials\n"
                                          "    steel: 1 triangle\n"
                                          "    oak\\x0a: 2 triangles\n"
                                          "      map_Kd  /maps/oak.png (64 x 32)\n"
                                          "      map_Ks  /maps/\\x09gone.png (missing)\n"
                                          "  note         One thing.\n"
                                          "  note         Another.\n");
}

TEST(SummaryOutputTest, TextOfAnEmptyModelSaysNone) {
    ModelSummary summary;
    summary.file = "empty.obj";
    summary.commands = 1;
    EXPECT_EQ(summaryText(summary), "empty.obj\n"
                                    "  vertices     0 before merging, 0 after\n"
                                    "  faces        0\n"
                                    "  triangles    0\n"
                                    "  draws        0 with 1 command\n"
                                    "  attributes   none\n"
                                    "  bounds       none\n"
                                    "  on the GPU   0 bytes\n"
                                    "  loaded in    0.00 ms (0.0 MB/s)\n");
}

TEST(SummaryOutputTest, JsonHasAKeyForEachFact) {
    const QJsonArray attributes{QJsonObject{{"name", "va_Normal"}, {"components", 3}, {"type", "GL_FLOAT"}},
                                QJsonObject{{"name", "va\t"}, {"components", 2}, {"type", "GL_SHORT"}}};
    const QJsonArray textures{
        QJsonObject{
            {"map", "map_Kd"}, {"path", "/maps/oak.png"}, {"status", "found"}, {"width", 64}, {"height", 32}},
        QJsonObject{{"map", "map_Ks"}, {"path", "/maps/\tgone.png"}, {"status", "missing"}}};
    const QJsonArray materials{QJsonObject{{"name", "steel"}, {"triangles", 1}, {"textures", QJsonArray()}},
                               QJsonObject{{"name", "oak\n"}, {"triangles", 2}, {"textures", textures}}};
    EXPECT_EQ(summaryJson(fullSummary()),
              (QJsonObject{{"file", "ship\n.obj"},
                           {"corners", 101},
                           {"vertices", 102},
                           {"faces", 103},
                           {"triangles", 104},
                           {"droppedFaces", 105},
                           {"facesWithoutGroup", 106},
                           {"untriangulatedFaces", 107},
                           {"substitutedCorners", 108},
                           {"draws", 2},
                           {"commands", 3},
                           {"attributes", attributes},
                           {"materials", materials},
                           {"bounds", QJsonObject{{"minimum", QJsonArray{-1, -2, -3.5}},
                                                  {"maximum", QJsonArray{1, 2, 1e6}}}},
                           {"gpuBytes", 4096},
                           {"acmr", 0.75},
                           {"atvr", 1.125},
                           {"bytesRead", 3000000},
                           {"seconds", 0.125},
                           {"megabytesPerSecond", 24},
                           {"repairs", QJsonArray()},
                           {"notes", QJsonArray{"One thing.", "Another."}}}));
}

TEST(SummaryOutputTest, UnknownCacheStatisticsAreOmitted) {
    ModelSummary summary = fullSummary();
    summary.cache.reset();
    EXPECT_FALSE(summaryText(summary).contains("ACMR"));
    EXPECT_FALSE(summaryText(summary).contains("ATVR"));
    EXPECT_FALSE(summaryJson(summary).contains("acmr"));
    EXPECT_FALSE(summaryJson(summary).contains("atvr"));
}

TEST(SummaryOutputTest, JsonOfAnInvalidBoxIsNull) {
    EXPECT_EQ(summaryJson(ModelSummary())["bounds"], QJsonValue());
    EXPECT_TRUE(summaryJson(ModelSummary()).contains("bounds"));
}

} // namespace

} // namespace Atelier::Vel::Tool
