// Read-only registry of the catalogue, generated from the same tables as the
// classes: for tools that explain a class, and for tests that walk the whole
// catalogue.
#pragma once

#include "ZORSimExcContract.h"

#include <string>
#include <vector>

struct ZORSimExcFieldInfo {
    const char* getter; // "GetFile_name"
    ZORSimExcFieldKind kind;
    int capacity;     // N of a string field, 0 otherwise
    const char* type; // the C++ type as the table spells it
};

// A field value in a form common to every kind, for building classes from
// generated values and reading them back through their getters.
struct ZORSimExcValue {
    long long integer = 0; // Int32, Int64, Bool; the code of SystemError, ParserError, SerSystemError
    unsigned long long unsignedInteger = 0; // UInt32, UInt64
    double real = 0;                        // Float, Double
    std::string text;                       // String, TextPointer; the shown text of the other kinds
    void* parser = nullptr;                 // the XML parser for ParserPlace and ParserError
    bool isNull = false;                    // a null TextPointer
};

struct ZORSimExcClassInfo {
    const char* name;
    int code;
    const char* base;  // the direct base class
    const char* block; // the catalogue block the class belongs to
    const char* format;
    int baseArgCount; // values also handed to the base's constructor
    int baseArgs[9];  // their 1-based positions, in the base's parameter order
    int fieldCount;
    const ZORSimExcFieldInfo* fields;

    // A new instance from fieldCount values (a TextPointer points into the
    // value's text, so the values must outlive the instance).
    ZORBasException* (*create)(const ZORSimExcValue* values);
    // Field `index` (0-based) read through its getter.
    ZORSimExcValue (*get)(const ZORBasException& instance, int index);
    // True when the instance is of this class or derives from it.
    bool (*isA)(const ZORBasException& instance);
    // True when a handler for this class catches what raise(context) throws.
    bool (*catches)(void (*raise)(void*), void* context);
};

class ZORSIM_API ZORSimExcRegistry {
public:
    static int Count();
    static const ZORSimExcClassInfo& At(int index);
    // By exact class name; null when there is none.
    static const ZORSimExcClassInfo* FindByName(const char* name);
    // Every class with this code, in catalogue order.
    static std::vector<const ZORSimExcClassInfo*> FindByCode(int code);
    static const char* KindName(ZORSimExcFieldKind kind);
};
