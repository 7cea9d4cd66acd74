// atr<T1, ..., Tn>(format, a1, ..., an, mode): a whole message in one call,
// with the caller's mode passed to every step. The instances the catalogue
// uses are exported by the library; the definition is visible for others.
#pragma once

#include "ZORSimContainersExport.h"
#include "atr_String.h"

template <class... Ts> atr_String atr(const char* format, Ts... values, ZORBasStringMode mode) {
    atr_translate translation(format, mode);
    int index = 0;
    (atr_SubstituteFormat(translation, ++index, values, mode), ...);
    return translation.Result(mode);
}

#define ZORSIM_ATR(...)                                                                                      \
    extern template ZORSIM_API atr_String atr<__VA_ARGS__>(const char*, __VA_ARGS__, ZORBasStringMode);
#include "ZORSimExcAtrInstances.def"
#undef ZORSIM_ATR
