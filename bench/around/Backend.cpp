#include "around/Backend.h"

BenchBackend& BenchBackend::get() {
    static BenchBackend backend;
    return backend;
}

int BenchBackend::setSource(const char* /*url*/, SourceDescription** /*sources*/, int /*flags*/) {
    return 1;
}

void BenchBackend::pause(int /*mode*/) {}

void BenchBackend::writeData(NeedDataEvent* event, unsigned size, WriteDataStatus /*status*/) {
    received += size;
    delete[] event->data;
    delete event;
}

void BenchBackend::request(unsigned size) const {
    client->handleEvent(new NeedDataEvent(0, size));
}

__attribute__((visibility("default"))) UVABackend*
UVAFactory::requestBackend(UVABackend::UVABackendType /*type*/, UVAClient* client) {
    BenchBackend::get().client = client;
    return &BenchBackend::get();
}

__attribute__((visibility("default"))) void UVAFactory::releaseBackend(UVABackend* /*backend*/) {}
