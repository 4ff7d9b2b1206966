// cache/work_item.h — the reference-counted request that carries one
// background pass of a cache to its executor (folder-private).
//
// A `WorkItem` follows the foundation library's unknown-interface style: an
// interlocked reference count that starts at 0, self-destruction when the
// last reference is released, and interface queries by 16-byte identifier.
// It owns a `WorkItem::Worker`, the part that knows which cache to work on;
// `Run` forwards to it. The item is held by the poster while it is being set
// up and by the executor's task until the task has run and been destroyed,
// so the last `Release` may happen on either thread.
//
// `WorkItemRef` is the counted reference through which the item is handled:
// copying adds a reference, destruction releases one, and dereferencing an
// empty one raises `Talc::NullInterfaceException`.
#pragma once

#include <cstdint>
#include <memory>

#include "host/talc_unknown.h"

// Identifiers the work item answers to. The first is the one the poster asks
// for when it hands the item to the executor's task.
inline constexpr Talc::Guid kWorkItemRequestId = {
    0x793307D6, 0xFE55, 0x4055, {0xB1, 0x34, 0x3A, 0xAF, 0xB1, 0x4D, 0x0A, 0x74}};
inline constexpr Talc::Guid kWorkItemQueueRequestId = {
    0xAD0BE999, 0x84A4, 0x4245, {0x93, 0x72, 0xB2, 0x4A, 0x16, 0x49, 0x81, 0x99}};
inline constexpr Talc::Guid kWorkItemUnknownId = {
    0x4F9CB3F7, 0xC5DF, 0x4F33, {0xB5, 0xA5, 0x78, 0x4C, 0xDF, 0x9C, 0x3F, 0xB9}};

// Result of a query for an identifier the item does not know.
inline constexpr Talc::Result kNoInterface = static_cast<Talc::Result>(0xA00A0001u);

class WorkItem : public Talc::IThreadedQueueRequest {
public:
    // What the item does when it runs; owned by the item.
    class Worker {
    public:
        virtual void Run() = 0;
        virtual ~Worker() = default;
    };

    WorkItem() = default;
    WorkItem(const WorkItem&) = delete;
    WorkItem& operator=(const WorkItem&) = delete;

    uint32_t AddRef() override;
    // Destroys the item (and its worker) when the count reaches 0.
    uint32_t Release() override;

protected:
    ~WorkItem() override;

public:
    Talc::Result QueryInterface(const Talc::Guid& id, void** out) override;
    Talc::Result QueryInterfaceNoAddRef(const Talc::Guid& id, void** out) override;
    // Runs the worker, if one is attached.
    void Run() override;
    // out = this with a reference added; returns out.
    virtual WorkItem* GetReference(WorkItem** out);

    // Attaches the worker (replacing and destroying any earlier one). Call
    // before the item is handed to another thread.
    void SetWorker(std::unique_ptr<Worker> worker) { worker_ = std::move(worker); }

private:
    uint32_t refCount_ = 0;  // changed only through interlocked operations
    std::unique_ptr<Worker> worker_;
};

// A counted reference to a WorkItem.
class WorkItemRef {
public:
    WorkItemRef() = default;
    // Takes a new reference to `item` (null gives an empty reference).
    explicit WorkItemRef(WorkItem* item);
    WorkItemRef(const WorkItemRef& other);
    WorkItemRef(WorkItemRef&& other) noexcept : item_(other.item_) { other.item_ = nullptr; }
    WorkItemRef& operator=(WorkItemRef other) noexcept;
    ~WorkItemRef();

    // Throws Talc::NullInterfaceException when empty.
    WorkItem* operator->() const;
    WorkItem& operator*() const { return *operator->(); }
    [[nodiscard]] WorkItem* Get() const { return item_; }
    explicit operator bool() const { return item_ != nullptr; }

    // Gives up the reference without releasing it.
    [[nodiscard]] WorkItem* Detach() {
        WorkItem* item = item_;
        item_ = nullptr;
        return item;
    }
    // Adopts a reference already counted for this holder.
    static WorkItemRef Adopt(WorkItem* item) {
        WorkItemRef ref;
        ref.item_ = item;
        return ref;
    }

private:
    WorkItem* item_ = nullptr;
};

// Lets Boost's bind call members through a WorkItemRef.
inline WorkItem* get_pointer(const WorkItemRef& ref) { return ref.operator->(); }

// Makes a work item with one reference, held by the result. Returns an empty
// reference when the item cannot be allocated.
WorkItemRef CreateWorkItem();
