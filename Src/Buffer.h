#ifndef SONOLET_BUFFER_H
#define SONOLET_BUFFER_H

// A byte buffer between one writer and one reader. Sizes, offsets and counts are bytes. Nothing
// throws but the constructors; what does not fit or is not there is refused whole.
//
// The order of the virtual operations is fixed.
class Buffer {
public:
    Buffer() = default;
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    virtual ~Buffer() = default;

    virtual void read(char* out, const unsigned& offset, const unsigned& length);
    virtual void write(const char* data, const unsigned& length);
    // Bytes in all, and bytes still free; a ring tells neither.
    virtual unsigned getSize() const;
    virtual unsigned getSpace() const;
    virtual bool canRead(const unsigned& offset, const unsigned& length) const;
    virtual bool canWrite(const unsigned& length) const;
    // A ring writes nothing.
    virtual void writeToFile(const char* path) = 0;

    // For buffers that tell their space. Equality is enough.
    bool hasEnoughSpace(const unsigned& length) const;
};

#endif
