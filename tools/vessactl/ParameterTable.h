#pragma once

#include <cstdint>
#include <string>

namespace vessa {

// What vessactl knows about the service's numbers, for its help and its output.
class ParameterTable {
  public:
    // A sound setting addressed by id (100 to 116) in get/set requests.
    struct ParamId {
        int id;
        const char* name;     // the tuning-file tag of the setting
        const char* meaning;  // one line for --help
        int min;
        int max;
        int length;  // number of values
    };
    // An integer parameter of getIntParam: four characters packed big-endian.
    struct IntCode {
        char code[5];
        const char* meaning;
    };

    static const ParamId* paramIds(int* count);
    // Null for an id the service does not support.
    static const ParamId* findParamId(int id);
    // In the order status shows them.
    static const IntCode* intCodes(int* count);
    static uint32_t packIntCode(const IntCode& code);

    // The port number for a number or a port name ("headphone"); -1 if neither.
    static int parsePort(const std::string& text);
    static const char* portName(int port);
    static constexpr int kNumPorts = 7;

  private:
    ParameterTable() = delete;
};

}  // namespace vessa
