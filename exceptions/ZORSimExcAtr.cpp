#include "ZORSimExcAtr.h"

#define ZORSIM_ATR(...)                                                                                      \
    template ZORSIM_API atr_String atr<__VA_ARGS__>(const char*, __VA_ARGS__, ZORBasStringMode);
#include "ZORSimExcAtrInstances.def"
#undef ZORSIM_ATR
