#pragma once

#include <dlfcn.h>

#include <QtCore/QStringList>

#include <gtest/gtest.h>

/// For tests that load the library as a plug-in host does and watch what its static objects do. Their program
/// is not linked to the library.
namespace Atelier::Vel::Testing {

/// The objects that the library's static objects made and registered, in order.
inline QStringList& staticEvents() {
    static QStringList list;
    return list;
}

/// The function that a function of this program stands in for.
template<typename Function>
Function* original(const char* symbol) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, symbol));
}

inline void* loadLibrary() {
    void* const library = dlopen(VELMODEL_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    EXPECT_NE(library, nullptr) << dlerror();
    return library;
}

} // namespace Atelier::Vel::Testing
