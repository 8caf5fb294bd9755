// An owned byte array that is exactly as large as it was last asked to be.
#pragma once

/// Growable byte buffer. Not locked: it belongs to one thread or is guarded by its owner's lock.
class CQBMem {
public:
    CQBMem() = default;
    /// Sizes the buffer at once and writes its address to *out. A size below 1 gives an empty buffer and null.
    CQBMem(void** out, int size);
    virtual ~CQBMem();
    CQBMem(const CQBMem&) = delete;
    CQBMem& operator=(const CQBMem&) = delete;

    /// Resizes to exactly n bytes; the old contents stay as far as they fit, the rest is zero.
    /// @return the data, owned by this object; null for n = 0 and when no memory is left (the size is 0 then)
    unsigned char* SetSize(unsigned n);
    unsigned GetSize() const { return m_size; }
    unsigned char* GetData() const { return m_data; }

    /// Frees an array made with new[] and clears the pointer; null is allowed.
    static void FreeData(unsigned char*& p);
    /// Frees the data; the size becomes 0.
    void Release();

private:
    unsigned char* m_data = nullptr;
    unsigned m_size = 0;
};
