// memory/coverage_recycler.cpp — size classes, the address map and the
// lifetime of the process-wide recycler.
//
// The recycler, the map of handed-out buffers and the map's mutex form one
// `RecyclerState`, held through an interlocked reference count: the library
// holds one reference from creation to unload, and each call holds one while
// it uses the state. `std::call_once` makes the first creation safe against
// concurrent first calls. The recycler is called outside the map's mutex when
// allocating (it locks itself) and inside it when recycling, so that a buffer
// cannot be handed out again before its map entry is gone.
#include "memory/coverage_recycler.h"

#include "host/interlocked.h"
#include "host/memory_recycler.h"
#include "host/recursive_mutex.h"

#include <atomic>
#include <mutex>
#include <new>
#include <unordered_map>

namespace tr {
namespace {

constexpr uint32_t kMiB = 1048576;
constexpr uint32_t kSmallBufferLimit = 100 * 1024;  // passed through unrounded
constexpr uint32_t kSizeClasses[] = {1 * kMiB, 2 * kMiB, 3 * kMiB, 5 * kMiB, 9 * kMiB, 13 * kMiB, 15 * kMiB};

class RecyclerState {
public:
    RecyclerState() { recycler_.SetSize(kRecyclerBytes); }

    void AddRef() { vantor::utility::InterlockedIncrement(refCount_); }
    void Release() {
        if (vantor::utility::InterlockedDecrement(refCount_) == 0) {
            delete this;
        }
    }

    void* Allocate(uint32_t bytes) {
        Talc::MemoryBuffer buffer = recycler_.AllocateBuffer(bytes);
        if (buffer.address == nullptr) {
            return nullptr;
        }
        vantor::threads::ScopedLock lock(mapMutex_, "RecyclerMap");
        try {
            handedOut_[KeyOf(buffer.address)] = buffer;
        } catch (const std::bad_alloc&) {
            // Unrecorded, the buffer could never come back: refuse it.
            recycler_.RecycleBuffer(buffer);
            return nullptr;
        }
        return buffer.address;
    }

    void Recycle(void* address) {
        vantor::threads::ScopedLock lock(mapMutex_, "RecyclerMap");
        const auto found = handedOut_.find(KeyOf(address));
        if (found == handedOut_.end()) {
            return;
        }
        if (found->second.address != nullptr) {
            recycler_.RecycleBuffer(found->second);
        }
        handedOut_.erase(found);
    }

    uint32_t Purge() { return recycler_.Purge(0); }

private:
    ~RecyclerState() = default;  // through Release only

    static int64_t KeyOf(const void* address) {
        return static_cast<int64_t>(reinterpret_cast<intptr_t>(address));
    }

    uint32_t refCount_ = 1;  // the library's reference
    Talc::MemoryRecycler recycler_;
    vantor::threads::RecursiveMutex mapMutex_;
    std::unordered_map<int64_t, Talc::MemoryBuffer> handedOut_;
};

std::once_flag gCreateOnce;
std::atomic<RecyclerState*> gState{nullptr};

// Releases the library's reference at unload. Declared after gState and
// gCreateOnce, which are constant-initialised, so it is destroyed first.
struct RecyclerUnload {
    ~RecyclerUnload() {
        if (RecyclerState* state = gState.exchange(nullptr)) {
            state->Release();
        }
    }
} gRecyclerUnload;

// A counted reference to the state for the length of one call.
class StateHandle {
public:
    // `create`: make the state if this is the first use.
    explicit StateHandle(bool create) {
        if (create) {
            std::call_once(gCreateOnce, [] { gState.store(new RecyclerState, std::memory_order_release); });
        }
        state_ = gState.load(std::memory_order_acquire);
        if (state_ != nullptr) {
            state_->AddRef();
        }
    }
    ~StateHandle() {
        if (state_ != nullptr) {
            state_->Release();
        }
    }
    StateHandle(const StateHandle&) = delete;
    StateHandle& operator=(const StateHandle&) = delete;

    RecyclerState* operator->() const { return state_; }
    explicit operator bool() const { return state_ != nullptr; }

private:
    RecyclerState* state_ = nullptr;
};

}  // namespace

uint32_t RecyclerSizeClass(uint32_t bytes) {
    if (bytes <= kSmallBufferLimit) {
        return bytes;
    }
    for (const uint32_t sizeClass : kSizeClasses) {
        if (sizeClass >= bytes) {
            return sizeClass;
        }
    }
    return bytes;
}

void* AllocateBuffer(uint32_t bytes) {
    const StateHandle state(true);
    return state ? state->Allocate(RecyclerSizeClass(bytes)) : nullptr;
}

void RecycleBuffer(void* address) {
    if (address == nullptr) {
        return;
    }
    // Before the first allocation there is nothing to give back.
    const StateHandle state(false);
    if (state) {
        state->Recycle(address);
    }
}

uint32_t PurgeRecycler() {
    const StateHandle state(true);
    return state ? state->Purge() : 0;
}

}  // namespace tr
