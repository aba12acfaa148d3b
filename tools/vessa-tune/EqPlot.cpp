#include "EqPlot.h"

#include <cairo-svg.h>
#include <cairo.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <memory>

namespace vessa {

namespace {

struct SurfaceDeleter {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
struct ContextDeleter {
    void operator()(cairo_t* cr) const { cairo_destroy(cr); }
};
using Surface = std::unique_ptr<cairo_surface_t, SurfaceDeleter>;
using Context = std::unique_ptr<cairo_t, ContextDeleter>;

struct Rgb {
    double r, g, b;
};

// Colour-blind-friendly and distinct on white; past the tenth curve the colours
// repeat with a dashed line.
constexpr Rgb kPalette[] = {{0.12, 0.47, 0.71}, {1.00, 0.50, 0.05}, {0.17, 0.63, 0.17},
                            {0.84, 0.15, 0.16}, {0.58, 0.40, 0.74}, {0.55, 0.34, 0.29},
                            {0.89, 0.47, 0.76}, {0.50, 0.50, 0.50}, {0.74, 0.74, 0.13},
                            {0.09, 0.75, 0.81}};
constexpr size_t kColours = sizeof(kPalette) / sizeof(kPalette[0]);

constexpr double kFontSize = 12;
constexpr double kTitleSize = 16;
constexpr double kMarkerRadius = 3;
constexpr double kLegendRow = 20;
constexpr double kLegendSwatch = 28;

enum class Format { SVG, PNG, UNKNOWN };

Format formatOf(const std::string& path) {
    const size_t dot = path.rfind('.');
    const size_t slash = path.rfind('/');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) {
        return Format::UNKNOWN;
    }
    std::string extension = path.substr(dot);
    for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (extension == ".svg") return Format::SVG;
    if (extension == ".png") return Format::PNG;
    return Format::UNKNOWN;
}

// Checked before any file is created, so that a refused plot leaves nothing behind.
bool validate(const std::string& yLabel, const std::vector<EqSeries>& series, std::string* error) {
    if (series.empty()) {
        *error = "nothing to plot: no curves";
        return false;
    }
    for (const EqSeries& s : series) {
        if (s.frequencies.empty() || s.frequencies.size() != s.gains.size()) {
            *error = "curve \"" + s.name + "\" has " + std::to_string(s.frequencies.size()) +
                     " frequencies and " + std::to_string(s.gains.size()) + " " + yLabel +
                     " values";
            return false;
        }
        for (size_t i = 0; i < s.frequencies.size(); ++i) {
            // A log axis has no place for 0 Hz or below.
            if (!std::isfinite(s.frequencies[i]) || s.frequencies[i] <= 0 ||
                !std::isfinite(s.gains[i])) {
                *error = "curve \"" + s.name + "\" has an unplottable point at band " +
                         std::to_string(i + 1);
                return false;
            }
        }
    }
    return true;
}

// The 1-2-5 values of a decade-based axis: the largest at or below `v` when
// `down`, else the smallest at or above it.
double round125(double v, bool down) {
    const double decade = std::pow(10.0, std::floor(std::log10(v)));
    const double steps[] = {1, 2, 5, 10};
    if (down) {
        double best = decade;
        for (double s : steps) {
            if (s * decade <= v * (1 + 1e-9)) best = s * decade;
        }
        return best;
    }
    for (double s : steps) {
        if (s * decade >= v * (1 - 1e-9)) return s * decade;
    }
    return 10 * decade;
}

std::string frequencyLabel(double hz) {
    char text[32];
    if (hz >= 1000) {
        std::snprintf(text, sizeof(text), "%gk", hz / 1000);
    } else {
        std::snprintf(text, sizeof(text), "%g", hz);
    }
    return text;
}

struct Axes {
    double left, right, top, bottom;  // the plot area, in device units
    double fLo, fHi;                  // frequency range (log)
    double yLo, yHi, yStep;           // value range and tick step (linear)

    double x(double hz) const {
        return left + (right - left) * std::log10(hz / fLo) / std::log10(fHi / fLo);
    }
    double y(double v) const { return bottom - (bottom - top) * (v - yLo) / (yHi - yLo); }
};

// The 1-2-5 tick step nearest to six ticks over `span`; the values are integers, so
// never below 1.
double niceStep(double span) {
    const double raw = span / 6;
    const double magnitude = std::pow(10.0, std::floor(std::log10(raw)));
    const double norm = raw / magnitude;
    const double step = (norm < 1.5 ? 1 : norm < 3 ? 2 : norm < 7 ? 5 : 10) * magnitude;
    return std::max(step, 1.0);
}

std::vector<double> yTicks(const Axes& a) {
    std::vector<double> ticks;
    for (double v = std::ceil(a.yLo / a.yStep) * a.yStep; v <= a.yHi; v += a.yStep) {
        ticks.push_back(std::fabs(v) < a.yStep * 1e-9 ? 0 : v);
    }
    return ticks;
}

std::string valueLabel(double v) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.0f", v);
    return text;
}

double textWidth(cairo_t* cr, const std::string& text) {
    cairo_text_extents_t extents;
    cairo_text_extents(cr, text.c_str(), &extents);
    return extents.x_advance;
}

// `align`: 0 left, 0.5 centred, 1 right of `x`; `y` is the baseline.
void showText(cairo_t* cr, const std::string& text, double x, double y, double align) {
    cairo_move_to(cr, x - align * textWidth(cr, text), y);
    cairo_show_text(cr, text.c_str());
}

// Hairlines on pixel centres, so that they stay sharp in the PNG.
double crisp(double v) {
    return std::floor(v) + 0.5;
}

void setFont(cairo_t* cr, double size, bool bold) {
    cairo_select_font_face(cr, "sans-serif", CAIRO_FONT_SLANT_NORMAL,
                           bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(cr, size);
}

Axes layout(cairo_t* cr, const std::vector<EqSeries>& series) {
    double fMin = series[0].frequencies[0], fMax = fMin;
    double gMin = series[0].gains[0], gMax = gMin;
    double legendText = 0;
    setFont(cr, kFontSize, false);
    for (const EqSeries& s : series) {
        for (size_t i = 0; i < s.frequencies.size(); ++i) {
            fMin = std::min(fMin, s.frequencies[i]);
            fMax = std::max(fMax, s.frequencies[i]);
            gMin = std::min(gMin, s.gains[i]);
            gMax = std::max(gMax, s.gains[i]);
        }
        legendText = std::max(legendText, textWidth(cr, s.name));
    }
    Axes a{};
    // The audible band at least, so that curves of different files compare at a glance.
    a.fLo = round125(std::min(fMin, 20.0), true);
    a.fHi = round125(std::max(fMax, 20000.0), false);
    if (gMax == gMin) {
        gMin -= 1;
        gMax += 1;
    }
    // A margin above and below, so that the markers at the extremes are not cut.
    const double margin = (gMax - gMin) * 0.06;
    a.yLo = gMin - margin;
    a.yHi = gMax + margin;
    a.yStep = niceStep(a.yHi - a.yLo);

    double labelWidth = 0;
    for (double v : yTicks(a)) labelWidth = std::max(labelWidth, textWidth(cr, valueLabel(v)));
    const double legendWidth = std::min(kLegendSwatch + legendText + 24, EqPlot::kWidth / 3.0);
    a.left = 40 + labelWidth;
    a.right = EqPlot::kWidth - 20 - legendWidth;
    a.top = 50;
    a.bottom = EqPlot::kHeight - 56;
    return a;
}

void drawGridAndAxes(cairo_t* cr, const Axes& a, const std::string& yLabel) {
    cairo_set_line_width(cr, 1);
    setFont(cr, kFontSize, false);
    // Frequency: every 1..9 of a decade as a faint line, the 1-2-5 ones labelled.
    for (double decade = std::pow(10.0, std::floor(std::log10(a.fLo))); decade < a.fHi;
         decade *= 10) {
        for (int m = 1; m <= 9; ++m) {
            const double hz = m * decade;
            if (hz < a.fLo * (1 - 1e-9) || hz > a.fHi * (1 + 1e-9)) continue;
            const bool major = m == 1 || m == 2 || m == 5;
            const double x = crisp(a.x(hz));
            const double shade = major ? 0.85 : 0.93;
            cairo_set_source_rgb(cr, shade, shade, shade);
            cairo_move_to(cr, x, a.top);
            cairo_line_to(cr, x, a.bottom);
            cairo_stroke(cr);
            if (major) {
                cairo_set_source_rgb(cr, 0.2, 0.2, 0.2);
                showText(cr, frequencyLabel(hz), x, a.bottom + 17, 0.5);
            }
        }
    }
    for (double v : yTicks(a)) {
        const double y = crisp(a.y(v));
        const double shade = v == 0 ? 0.55 : 0.85;
        cairo_set_source_rgb(cr, shade, shade, shade);
        cairo_move_to(cr, a.left, y);
        cairo_line_to(cr, a.right, y);
        cairo_stroke(cr);
        cairo_set_source_rgb(cr, 0.2, 0.2, 0.2);
        showText(cr, valueLabel(v), a.left - 6, y + 4, 1);
    }
    cairo_set_source_rgb(cr, 0.3, 0.3, 0.3);
    cairo_rectangle(cr, crisp(a.left), crisp(a.top), std::floor(a.right - a.left),
                    std::floor(a.bottom - a.top));
    cairo_stroke(cr);

    cairo_set_source_rgb(cr, 0, 0, 0);
    showText(cr, "frequency (Hz)", (a.left + a.right) / 2, a.bottom + 42, 0.5);
    cairo_save(cr);
    cairo_translate(cr, 20, (a.top + a.bottom) / 2);
    cairo_rotate(cr, -M_PI / 2);
    showText(cr, yLabel, 0, 0, 0.5);
    cairo_restore(cr);
}

void useStyle(cairo_t* cr, size_t index) {
    const Rgb& c = kPalette[index % kColours];
    cairo_set_source_rgb(cr, c.r, c.g, c.b);
    cairo_set_line_width(cr, 2);
    const double dash[] = {6, 3};
    cairo_set_dash(cr, dash, index < kColours ? 0 : 2, 0);
}

void marker(cairo_t* cr, double x, double y) {
    cairo_new_sub_path(cr);
    cairo_arc(cr, x, y, kMarkerRadius, 0, 2 * M_PI);
    cairo_fill(cr);
}

void drawCurves(cairo_t* cr, const Axes& a, const std::vector<EqSeries>& series) {
    cairo_save(cr);
    cairo_rectangle(cr, a.left, a.top, a.right - a.left, a.bottom - a.top);
    cairo_clip(cr);
    cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
    for (size_t i = 0; i < series.size(); ++i) {
        const EqSeries& s = series[i];
        useStyle(cr, i);
        for (size_t p = 0; p < s.frequencies.size(); ++p) {
            cairo_line_to(cr, a.x(s.frequencies[p]), a.y(s.gains[p]));
        }
        cairo_stroke(cr);
        for (size_t p = 0; p < s.frequencies.size(); ++p) {
            marker(cr, a.x(s.frequencies[p]), a.y(s.gains[p]));
        }
    }
    cairo_restore(cr);
}

void drawLegend(cairo_t* cr, const Axes& a, const std::vector<EqSeries>& series) {
    const double x = a.right + 12;
    const double width = EqPlot::kWidth - 10 - x;
    cairo_rectangle(cr, crisp(x), crisp(a.top), std::floor(width),
                    std::floor(series.size() * kLegendRow + 8));
    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_fill_preserve(cr);
    cairo_set_source_rgb(cr, 0.7, 0.7, 0.7);
    cairo_set_line_width(cr, 1);
    cairo_stroke(cr);
    // Names longer than the legend's third of the width are cut at its edge.
    cairo_save(cr);
    cairo_rectangle(cr, x, a.top, width, series.size() * kLegendRow + 8);
    cairo_clip(cr);
    setFont(cr, kFontSize, false);
    for (size_t i = 0; i < series.size(); ++i) {
        const double y = a.top + 4 + kLegendRow * (i + 0.5);
        useStyle(cr, i);
        cairo_move_to(cr, x + 6, y);
        cairo_line_to(cr, x + 6 + kLegendSwatch - 6, y);
        cairo_stroke(cr);
        marker(cr, x + 6 + (kLegendSwatch - 6) / 2, y);
        cairo_set_source_rgb(cr, 0, 0, 0);
        showText(cr, series[i].name, x + 6 + kLegendSwatch, y + 4, 0);
    }
    cairo_restore(cr);
}

void draw(cairo_t* cr, const std::string& title, const std::string& yLabel,
          const std::vector<EqSeries>& series) {
    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_paint(cr);
    const Axes a = layout(cr, series);
    drawGridAndAxes(cr, a, yLabel);
    drawCurves(cr, a, series);
    drawLegend(cr, a, series);
    setFont(cr, kTitleSize, true);
    cairo_set_source_rgb(cr, 0, 0, 0);
    showText(cr, title, EqPlot::kWidth / 2.0, 30, 0.5);
}

int failed(const std::string& path, cairo_status_t status, std::string* error) {
    *error = "cannot write " + path + ": " + cairo_status_to_string(status);
    return -EINVAL;
}

}  // namespace

int EqPlot::write(const std::string& path, const std::string& title, const std::string& yLabel,
                  const std::vector<EqSeries>& series, std::string* error) {
    const Format format = formatOf(path);
    if (format == Format::UNKNOWN) {
        *error = "cannot plot to " + path + ": the name must end in .svg or .png";
        return -EINVAL;
    }
    if (!validate(yLabel, series, error)) return -EINVAL;

    Surface surface(format == Format::SVG
                            ? cairo_svg_surface_create(path.c_str(), kWidth, kHeight)
                            : cairo_image_surface_create(CAIRO_FORMAT_ARGB32, kWidth, kHeight));
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) {
        return failed(path, cairo_surface_status(surface.get()), error);
    }
    if (format == Format::SVG) {
        // Plain user units, so that the SVG is as many pixels wide as the PNG.
        cairo_svg_surface_set_document_unit(surface.get(), CAIRO_SVG_UNIT_USER);
    }
    {
        Context cr(cairo_create(surface.get()));
        draw(cr.get(), title, yLabel, series);
        if (cairo_status(cr.get()) != CAIRO_STATUS_SUCCESS) {
            return failed(path, cairo_status(cr.get()), error);
        }
    }
    cairo_status_t status;
    if (format == Format::SVG) {
        // The SVG is written out on finish; a full disk shows only here.
        cairo_surface_finish(surface.get());
        status = cairo_surface_status(surface.get());
    } else {
        status = cairo_surface_write_to_png(surface.get(), path.c_str());
    }
    return status == CAIRO_STATUS_SUCCESS ? 0 : failed(path, status, error);
}

}  // namespace vessa
