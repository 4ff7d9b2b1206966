// host/talc_unknown.h — the foundation library's unknown-interface style.
//
// Reference-counted objects expose `TalcUnknown`: add-reference and release
// (the object destroys itself when its count reaches zero) and interface
// queries by 16-byte identifier. `IThreadedQueueRequest` is the queued work
// request that a background executor runs. Declarations only: implementers
// (the cache's work item) provide the counting and the queries.
//
// The virtual operations are declared in slot order: AddRef, Release, the
// destructor, QueryInterface, QueryInterfaceNoAddRef, then Run.
#pragma once

#include <cstdint>

namespace Talc {

// A 16-byte interface identifier in the standard GUID layout: data1-data3 are
// stored little-endian on this platform, data4 byte by byte, so equality of
// the fields is equality of the 16 bytes.
struct Guid {
    uint32_t data1;
    uint16_t data2;
    uint16_t data3;
    uint8_t data4[8];

    friend constexpr bool operator==(const Guid&, const Guid&) = default;
};
static_assert(sizeof(Guid) == 16, "identifiers are compared and stored as 16 bytes");

// Query results: 0 or positive is success, negative is failure.
using Result = int32_t;

class TalcUnknown {
public:
    // Return the new reference count.
    virtual uint32_t AddRef() = 0;
    virtual uint32_t Release() = 0;

protected:
    // Objects are destroyed by their own Release, never by their users.
    virtual ~TalcUnknown() = default;

public:
    // On success `out` is the object seen through the interface `id`, with a
    // reference added (QueryInterface) or not (QueryInterfaceNoAddRef); on
    // failure `out` is null and the result negative.
    virtual Result QueryInterface(const Guid& id, void** out) = 0;
    virtual Result QueryInterfaceNoAddRef(const Guid& id, void** out) = 0;
};

class IThreadedQueueRequest : public TalcUnknown {
public:
    // Runs the request on the executor's thread.
    virtual void Run() = 0;

protected:
    ~IThreadedQueueRequest() override = default;
};

}  // namespace Talc
