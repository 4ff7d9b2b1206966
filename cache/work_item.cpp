// cache/work_item.cpp — counting, queries and running of the work item.
#include "cache/work_item.h"

#include <new>
#include <utility>

#include "host/interlocked.h"
#include "host/talc_exception.h"

uint32_t WorkItem::AddRef() { return vantor::utility::InterlockedIncrement(refCount_); }

uint32_t WorkItem::Release() {
    const uint32_t count = vantor::utility::InterlockedDecrement(refCount_);
    if (count == 0) {
        delete this;
    }
    return count;
}

WorkItem::~WorkItem() = default;

Talc::Result WorkItem::QueryInterface(const Talc::Guid& id, void** out) {
    const Talc::Result result = QueryInterfaceNoAddRef(id, out);
    if (result >= 0) {
        static_cast<Talc::TalcUnknown*>(*out)->AddRef();
    }
    return result;
}

Talc::Result WorkItem::QueryInterfaceNoAddRef(const Talc::Guid& id, void** out) {
    // Every identifier names the same object: the interfaces form one chain
    // of single inheritance, so they share its address.
    Talc::TalcUnknown* self = this;
    Talc::Result result = 0;
    if (id == kWorkItemRequestId || id == kWorkItemQueueRequestId) {
        *out = self;
    } else {
        *out = nullptr;
        result = kNoInterface;
    }
    if (result < 0 && id == kWorkItemUnknownId) {
        *out = self;
        result = 0;
    }
    return result;
}

void WorkItem::Run() {
    if (worker_) {
        worker_->Run();
    }
}

WorkItem* WorkItem::GetReference(WorkItem** out) {
    *out = this;
    if (*out != nullptr) {
        (*out)->AddRef();
    }
    return *out;
}

WorkItemRef::WorkItemRef(WorkItem* item) : item_(item) {
    if (item_ != nullptr) {
        item_->AddRef();
    }
}

WorkItemRef::WorkItemRef(const WorkItemRef& other) : WorkItemRef(other.item_) {}

WorkItemRef& WorkItemRef::operator=(WorkItemRef other) noexcept {
    std::swap(item_, other.item_);
    return *this;
}

WorkItemRef::~WorkItemRef() {
    if (item_ != nullptr) {
        item_->Release();
    }
}

WorkItem* WorkItemRef::operator->() const {
    if (item_ == nullptr) {
        throw Talc::NullInterfaceException();
    }
    return item_;
}

WorkItemRef CreateWorkItem() {
    WorkItem* item = new (std::nothrow) WorkItem();
    // The item starts at count 0; the reference made here is its first.
    return WorkItemRef(item);
}
