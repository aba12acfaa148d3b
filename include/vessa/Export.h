#pragma once

// Marks what libvessa exports; everything else in it is built hidden.
#define VESSA_EXPORT __attribute__((visibility("default")))
