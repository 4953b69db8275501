// A client that knows a synchronizer by its virtual table alone.

#include "RawClient.h"

namespace {

// Slots 1 and 2 are the two destructors.
struct Synchronizer {
    struct Table {
        void (*destroy)(Synchronizer*);
        void (*destroyAndDelete)(Synchronizer*);
        void (*requestInfo)(Synchronizer*, const void*);
        void* (*requestCmd)(Synchronizer*, const void*);
    };
    const Table* table;
};

}  // namespace

void rawRequestInfo(void* object, const void* in) {
    auto* synchronizer = static_cast<Synchronizer*>(object);
    synchronizer->table->requestInfo(synchronizer, in);
}

void* rawRequestCmd(void* object, const void* in) {
    auto* synchronizer = static_cast<Synchronizer*>(object);
    return synchronizer->table->requestCmd(synchronizer, in);
}
