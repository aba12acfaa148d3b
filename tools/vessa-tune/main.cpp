// vessa-tune: checks, shows, compares and plots tuning files as the service reads them.

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>
#include <string>

#include "EqPlot.h"
#include "TuningChecker.h"
#include "TuningRecords.h"

namespace {

using vessa::Finding;
using vessa::TuningRecords;
using Json = TuningRecords::Json;

constexpr int kClean = 0;
constexpr int kWarnings = 1;
constexpr int kErrors = 2;  // also: the command line or a file could not be used

std::string schemaPath() {
    return access(VESSA_SCHEMA_INSTALLED, R_OK) == 0 ? VESSA_SCHEMA_INSTALLED : VESSA_SCHEMA_SOURCE;
}

int check(const std::string& file, const std::string& oem, bool json) {
    vessa::TuningChecker checker(schemaPath());
    std::vector<Finding> findings = oem.empty() ? checker.check(file) : checker.check(file, oem);
    int status = kClean;
    Json list = Json::array();
    for (const Finding& f : findings) {
        const bool error = f.severity == Finding::Severity::ERROR;
        status = std::max(status, error ? kErrors : kWarnings);
        if (json) {
            list.push_back({{"file", f.file},
                            {"line", f.line},
                            {"severity", error ? "error" : "warning"},
                            {"message", f.message}});
        } else {
            std::cout << f.file << ":" << f.line << ": " << (error ? "error" : "warning") << ": "
                      << f.message << "\n";
        }
    }
    if (json) std::cout << Json({{"file", file}, {"findings", list}}).dump(2) << "\n";
    return status;
}

bool load(TuningRecords* records, const std::string& file) {
    std::string error;
    if (records->load(file, &error)) return true;
    std::cerr << "vessa-tune: " << error << "\n";
    return false;
}

std::string valuesText(const Json& values) {
    if (values.is_null()) return "(none)";
    if (values.is_string()) return values.get<std::string>();
    if (values.is_boolean()) return values.get<bool>() ? "yes" : "no";
    std::string text;
    for (const Json& v : values) text += (text.empty() ? "" : " ") + std::to_string(v.get<int>());
    return text.empty() ? "(empty)" : text;
}

void printParameters(const Json& parameters, const std::string& indent) {
    for (const auto& [name, values] : parameters.items()) {
        std::cout << indent << name << " = " << valuesText(values) << "\n";
    }
}

int show(const std::string& file, int profile, const std::string& tuning, bool json) {
    TuningRecords records;
    if (!load(&records, file)) return kErrors;
    Json document = records.toJson(profile, tuning);
    if (json) {
        std::cout << document.dump(2) << "\n";
        return kClean;
    }
    std::cout << "format " << document["formatVersion"].get<std::string>() << ", tool "
              << document["toolVersion"].get<std::string>() << "\n";
    for (const Json& p : document["profiles"]) {
        std::cout << "\nprofile " << p["id"] << " " << p["name"].get<std::string>()
                  << (p["mobility"].get<bool>() ? " (mobility)" : "") << "\n";
        printParameters(p["parameters"], "  ");
        if (p.contains("geqPreset")) {
            std::cout << "  graphic EQ:\n";
            printParameters(p["geqPreset"], "    ");
        }
        for (const Json& e : p["endpoints"]) {
            std::cout << "  endpoint " << e["endpoint"].get<std::string>() << " (IEQ preset "
                      << e["ieqPreset"].get<std::string>() << "):\n";
            printParameters(e["parameters"], "    ");
        }
    }
    if (document.contains("ieqPresets")) {
        for (const Json& preset : document["ieqPresets"]) {
            std::cout << "\nIEQ preset " << preset["preset"].get<std::string>() << "\n";
            printParameters(preset["parameters"], "  ");
        }
    }
    for (const Json& t : document["tunings"]) {
        std::cout << "\ntuning " << t["name"].get<std::string>() << " ("
                  << t["endpoint"].get<std::string>() << (t["mono"].get<bool>() ? ", mono" : "")
                  << ")\n  devices:";
        for (const Json& d : t["devices"]) {
            std::cout << " " << d["device"].get<std::string>() << " ("
                      << d["port"].get<std::string>() << ")";
        }
        std::cout << (t["devices"].empty() ? " none\n" : "\n");
        printParameters(t["parameters"], "  ");
    }
    return kClean;
}

int diff(const std::string& a, const std::string& b, bool json) {
    TuningRecords before, after;
    if (!load(&before, a) || !load(&after, b)) return kErrors;
    Json changes = TuningRecords::diff(before.flatten(), after.flatten());
    if (json) {
        std::cout << changes.dump(2) << "\n";
    } else {
        for (const Json& c : changes) {
            std::cout << c["record"].get<std::string>();
            if (c.contains("change")) {
                std::cout << ": " << c["change"].get<std::string>() << "\n";
            } else {
                std::cout << ": " << c["parameter"].get<std::string>() << ": "
                          << valuesText(c["before"]) << " -> " << valuesText(c["after"]) << "\n";
            }
        }
    }
    // Like diff(1): 0 when the files read the same, 1 when they differ.
    return changes.empty() ? 0 : 1;
}

int plot(const std::string& file, int profile, const std::string& out) {
    TuningRecords records;
    if (!load(&records, file)) return kErrors;
    std::vector<vessa::EqSeries> series = records.geqCurves(profile);
    const std::string stem = out.substr(0, out.rfind('.'));
    const std::string extension = out.substr(out.rfind('.'));
    std::string error;
    if (vessa::EqPlot::write(out, "Graphic EQ of " + file, "gain", series, &error) != 0) {
        std::cerr << "vessa-tune: " << error << "\n";
        return kErrors;
    }
    std::cout << out << ": graphic EQ of " << series.size() << " profile(s)\n";
    if (profile < 0) {
        const std::string ieqOut = stem + "-ieq" + extension;
        if (vessa::EqPlot::write(ieqOut, "IEQ presets of " + file, "target", records.ieqCurves(),
                                 &error) != 0) {
            std::cerr << "vessa-tune: " << error << "\n";
            return kErrors;
        }
        std::cout << ieqOut << ": IEQ preset targets\n";
    }
    return kClean;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Checks, shows, compares and plots vessa tuning files, as the service reads them.",
                 "vessa-tune");
    app.set_version_flag("--version", std::string("vessa-tune ") + VESSA_VERSION);
    app.require_subcommand(1);
    app.fallthrough();
    bool json = false;
    app.add_flag("--json", json, "machine-readable output");

    std::string file, other, oem, tuning, out;
    int profile = -1;
    CLI::App* checkCmd = app.add_subcommand(
            "check", "report what the service's parser skips, defaults, misreads or drops");
    checkCmd->add_option("FILE", file, "a tuning file")->required();
    checkCmd->add_option("--oem", oem, "check FILE as an OEM file merged into DEFAULT_FILE")
            ->type_name("DEFAULT_FILE");
    checkCmd->footer(
            "Exit status: 0 clean, 1 warnings only, 2 errors.\n"
            "Example: vessa-tune check etc/zan-extra.xml --oem "
            "etc/multimedia_vessa_zan_default.xml");
    CLI::App* showCmd = app.add_subcommand("show", "print the parsed records, parameters by name");
    showCmd->add_option("FILE", file, "a tuning file")->required();
    showCmd->add_option("--profile", profile, "only this profile")->type_name("ID");
    showCmd->add_option("--tuning", tuning, "only this tuning")->type_name("NAME");
    CLI::App* diffCmd = app.add_subcommand(
            "diff", "compare two files record by record; layout, order and comments do not count");
    diffCmd->add_option("A", file, "the old file")->required();
    diffCmd->add_option("B", other, "the new file")->required();
    diffCmd->footer("Exit status: 0 the same, 1 different, 2 a file cannot be read.");
    CLI::App* plotCmd = app.add_subcommand(
            "plot", "draw the graphic-EQ gains per profile, and the IEQ preset targets (OUT-ieq)");
    plotCmd->add_option("FILE", file, "a tuning file")->required();
    plotCmd->add_option("--profile", profile, "only this profile")->type_name("ID");
    plotCmd->add_option("-o,--output", out, "OUT.svg or OUT.png")->required();
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e) == 0 ? kClean : kErrors;
    }
    if (checkCmd->parsed()) return check(file, oem, json);
    if (showCmd->parsed()) return show(file, profile, tuning, json);
    if (diffCmd->parsed()) return diff(file, other, json);
    return plot(file, profile, out);
}
