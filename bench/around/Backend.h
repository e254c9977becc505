#ifndef SONOLET_BENCH_AROUND_BACKEND_H
#define SONOLET_BENCH_AROUND_BACKEND_H

#include "uva.h"

// A media backend that swallows what it gets. The factory has this one.
class BenchBackend final : public UVABackend {
public:
    static BenchBackend& get();

    int setSource(const char* url, SourceDescription** sources, int flags) override;
    void play() override {}
    void pause(int mode) override;
    void getPosition(double& position) override { position = seconds; }
    void writeData(NeedDataEvent* event, unsigned size, WriteDataStatus status) override;

    // Asks for bytes of the stream. REQUIRES: the plug-in plays.
    void request(unsigned size) const;

    UVAClient* client = nullptr;
    double seconds = 0;
    unsigned long received = 0;  // bytes
};

#endif
