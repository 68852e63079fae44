#pragma once

// 1 if this program runs under the thread sanitizer, which takes much memory; else 0.
#if defined(__SANITIZE_THREAD__)
#define VELMODEL_THREAD_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define VELMODEL_THREAD_SANITIZER 1
#endif
#endif
#ifndef VELMODEL_THREAD_SANITIZER
#define VELMODEL_THREAD_SANITIZER 0
#endif

// 1 if this program runs under the address sanitizer, which replaces the heap and takes much memory; else 0.
#if defined(__SANITIZE_ADDRESS__)
#define VELMODEL_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VELMODEL_ADDRESS_SANITIZER 1
#endif
#endif
#ifndef VELMODEL_ADDRESS_SANITIZER
#define VELMODEL_ADDRESS_SANITIZER 0
#endif
