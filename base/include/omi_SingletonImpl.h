// Definition of omi_Singleton<T>::Instance; include only where the
// singleton of T is explicitly instantiated.
#pragma once

#include "ZORBasAti.h"

template <class T> T& omi_Singleton<T>::Instance() {
    static T* instance = [] {
        T* object = new T();
        if (omi_SingletonRegistry* registry = omi_SingletonRegistry::Instance())
            registry->Add(typeid(T).name(), object, [](void* p) { delete static_cast<T*>(p); });
        return object;
    }();
    return *instance;
}
