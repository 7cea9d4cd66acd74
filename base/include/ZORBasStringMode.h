// Mode flag passed through the message formatter. The stand-in translates
// nothing, so the mode never changes a text; it is carried for the interface.
#pragma once

#include "VEXZORBasExport.h"

class ZORBAS_API ZORBasStringMode {
public:
    explicit ZORBasStringMode(bool mode = false) : m_mode(mode) {}
    bool Value() const { return m_mode; }

private:
    bool m_mode;
};
