#include "tests/support/ConverterFaults.h"

#include <cerrno>
#include <dlfcn.h>
#include <iconv.h>
#include <zstd.h>

namespace {

thread_local bool t_refuse = false;
thread_local int t_refused = 0;

bool IsRefused() {
    if (!t_refuse) return false;
    ++t_refused;
    errno = ENOMEM;
    return true;
}

template <class Function>
Function Real(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

namespace qfc::test {

ConverterFaults::ConverterFaults() {
    t_refuse = true;
    t_refused = 0;
}

ConverterFaults::~ConverterFaults() { t_refuse = false; }

int ConverterFaults::Refused() const { return t_refused; }

}  // namespace qfc::test

extern "C" {

iconv_t iconv_open(const char* to, const char* from) {
    if (IsRefused()) return reinterpret_cast<iconv_t>(-1);
    return Real<iconv_t (*)(const char*, const char*)>("iconv_open")(to, from);
}

ZSTD_CCtx* ZSTD_createCCtx() { return IsRefused() ? nullptr : Real<ZSTD_CCtx* (*)()>("ZSTD_createCCtx")(); }

ZSTD_DCtx* ZSTD_createDCtx() { return IsRefused() ? nullptr : Real<ZSTD_DCtx* (*)()>("ZSTD_createDCtx")(); }

}  // extern "C"
