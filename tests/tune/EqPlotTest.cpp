#include <cairo.h>
#include <fontconfig/fontconfig.h>
#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <unistd.h>

#include <cerrno>

#include "EqPlot.h"
#include "TempDir.h"

namespace vessa::test {
namespace {

// cairo's font caches and fontconfig's configuration live until exit; freed here so
// that the leak checker of the sanitizer builds sees only what the plot itself loses.
class FontCaches : public ::testing::Environment {
    void TearDown() override {
        cairo_debug_reset_static_data();
        FcFini();
    }
};
const auto* const kFontCaches = ::testing::AddGlobalTestEnvironment(new FontCaches);

class AnEqPlotOfTwoCurves : public ::testing::Test {
  protected:
    int write(const std::string& name, const std::vector<EqSeries>& series) {
        error.clear();
        return EqPlot::write(dir.path() + "/" + name, "Graphic EQ", "gain", series, &error);
    }
    // The pixels of a PNG written by the plot, with its size.
    std::string pixels(const std::string& name, int* width, int* height) {
        const std::string path = dir.path() + "/" + name;
        cairo_surface_t* png = cairo_image_surface_create_from_png(path.c_str());
        EXPECT_EQ(CAIRO_STATUS_SUCCESS, cairo_surface_status(png)) << path;
        *width = cairo_image_surface_get_width(png);
        *height = cairo_image_surface_get_height(png);
        const char* data = reinterpret_cast<const char*>(cairo_image_surface_get_data(png));
        std::string bytes =
                data == nullptr ? ""
                                : std::string(data, *height * cairo_image_surface_get_stride(png));
        cairo_surface_destroy(png);
        return bytes;
    }
    bool exists(const std::string& name) {
        return access((dir.path() + "/" + name).c_str(), F_OK) == 0;
    }

    TempDir dir;
    std::string error;
    std::vector<EqSeries> curves{{"Movie", {65, 1000, 17326}, {384, -188, 384}},
                                 {"Voice", {65, 2000, 17326}, {-192, 452, 1}}};
};

TEST_F(AnEqPlotOfTwoCurves, IsDrawnAsAnSvgAndAPngOfThePlotSize) {
    ASSERT_EQ(0, write("eq.svg", curves)) << error;
    xmlDocPtr doc = xmlReadFile((dir.path() + "/eq.svg").c_str(), nullptr, XML_PARSE_NONET);
    ASSERT_NE(nullptr, doc);
    xmlNodePtr root = xmlDocGetRootElement(doc);
    xmlChar* width = xmlGetProp(root, BAD_CAST "width");
    xmlChar* height = xmlGetProp(root, BAD_CAST "height");
    EXPECT_STREQ("svg", reinterpret_cast<const char*>(root->name));
    EXPECT_STREQ(std::to_string(EqPlot::kWidth).c_str(), reinterpret_cast<const char*>(width));
    EXPECT_STREQ(std::to_string(EqPlot::kHeight).c_str(), reinterpret_cast<const char*>(height));
    xmlFree(width);
    xmlFree(height);
    xmlFreeDoc(doc);

    ASSERT_EQ(0, write("eq.png", curves)) << error;
    int w = 0, h = 0;
    const std::string before = pixels("eq.png", &w, &h);
    EXPECT_EQ(EqPlot::kWidth, w);
    EXPECT_EQ(EqPlot::kHeight, h);
    // Within the same axes (the extremes stay), moving one band changes the image.
    curves[0].gains[1] = 0;
    ASSERT_EQ(0, write("moved.png", curves)) << error;
    EXPECT_NE(before, pixels("moved.png", &w, &h));
}

TEST_F(AnEqPlotOfTwoCurves, IsRefusedWhenItCannotBeDrawnOrWritten) {
    for (const std::string name : {"eq.pdf", "eq", "eq.svg.txt"}) {
        EXPECT_EQ(-EINVAL, write(name, curves)) << name;
        EXPECT_NE(std::string::npos, error.find(".svg or .png")) << error;
        EXPECT_FALSE(exists(name)) << name;
    }
    EXPECT_EQ(-EINVAL, write("none.svg", {}));
    EXPECT_NE(std::string::npos, error.find("no curves")) << error;
    EXPECT_FALSE(exists("none.svg"));

    std::vector<EqSeries> shortGains = curves, empty = curves, zeroHz = curves;
    shortGains[1].gains.pop_back();
    empty[0] = {"Flat", {}, {}};
    zeroHz[1].frequencies[0] = 0;
    EXPECT_EQ(-EINVAL, write("short.png", shortGains));
    EXPECT_EQ("curve \"Voice\" has 3 frequencies and 2 gain values", error);
    EXPECT_EQ(-EINVAL, write("empty.png", empty));
    EXPECT_NE(std::string::npos, error.find("\"Flat\" has 0 frequencies")) << error;
    EXPECT_EQ(-EINVAL, write("zero.png", zeroHz));
    EXPECT_NE(std::string::npos, error.find("\"Voice\" has an unplottable point at band 1"))
            << error;

    for (const std::string name : {"missing/eq.svg", "missing/eq.png"}) {
        EXPECT_EQ(-EINVAL, write(name, curves)) << name;
        EXPECT_NE(std::string::npos, error.find("cannot write " + dir.path() + "/" + name))
                << error;
    }
}

}  // namespace
}  // namespace vessa::test
