#include "common/mem.h"

#include <algorithm>
#include <cstring>
#include <new>

CQBMem::CQBMem(void** out, int size) {
    *out = SetSize(static_cast<unsigned>(std::max(size, 0)));
}

CQBMem::~CQBMem() {
    Release();
}

unsigned char* CQBMem::SetSize(unsigned n) {
    unsigned char* resized = n == 0 ? nullptr : new (std::nothrow) unsigned char[n]();
    if (resized == nullptr) {
        Release();
        return nullptr;
    }
    const unsigned kept = std::min(m_size, n);
    if (kept > 0) { std::memcpy(resized, m_data, kept); }
    FreeData(m_data);
    m_data = resized;
    m_size = n;
    return m_data;
}

void CQBMem::FreeData(unsigned char*& p) {
    delete[] p;
    p = nullptr;
}

void CQBMem::Release() {
    FreeData(m_data);
    m_size = 0;
}
