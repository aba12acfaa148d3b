#pragma once

namespace vessa::client {

// A sound setting clients address by id (101 to 116) or by name.
struct Setting {
    enum class Level {
        PROFILE,         // one value for the whole profile
        ENDPOINT,        // one value per endpoint; a profile-wide write sets all three
        GEQ,             // the profile's graphic-EQ preset
        FIXED_ENDPOINT,  // one endpoint only, whatever port is named
    };
    int id;
    const char* name;  // e.g. "ieq-amount"
    Level level;
    int min;
    int max;
    int length;    // number of values
    bool clamped;  // values outside [min, max] are brought into it; else stored as given
    const char* help;
};

}  // namespace vessa::client
