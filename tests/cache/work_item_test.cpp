// Tests of the work item: counting and self-destruction, the interface
// queries by identifier, running the worker, and the counted reference.
#include "cache/work_item.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "host/talc_exception.h"

namespace {

// Builds an identifier from its text form in the standard GUID byte layout:
// the first three groups stored little-endian, the last two byte by byte.
Talc::Guid ParseGuid(const std::string& text) {
    auto byteAt = [&](size_t position) {
        return static_cast<uint8_t>(std::strtoul(text.substr(position, 2).c_str(), nullptr, 16));
    };
    uint8_t bytes[16];
    const size_t first[4] = {6, 4, 2, 0};
    for (int i = 0; i < 4; ++i) bytes[i] = byteAt(first[i]);
    bytes[4] = byteAt(11);
    bytes[5] = byteAt(9);
    bytes[6] = byteAt(16);
    bytes[7] = byteAt(14);
    const size_t rest[8] = {19, 21, 24, 26, 28, 30, 32, 34};
    for (int i = 0; i < 8; ++i) bytes[8 + i] = byteAt(rest[i]);
    Talc::Guid guid;
    std::memcpy(&guid, bytes, sizeof guid);
    return guid;
}

// A worker that reports its runs and its destruction.
class ProbeWorker : public WorkItem::Worker {
public:
    ProbeWorker(std::atomic<int>* runs, std::atomic<int>* destroyed)
        : runs_(runs), destroyed_(destroyed) {}
    ~ProbeWorker() override { ++*destroyed_; }
    void Run() override { ++*runs_; }

private:
    std::atomic<int>* runs_;
    std::atomic<int>* destroyed_;
};

struct Probe {
    std::atomic<int> runs{0};
    std::atomic<int> destroyed{0};
    std::unique_ptr<WorkItem::Worker> MakeWorker() {
        return std::make_unique<ProbeWorker>(&runs, &destroyed);
    }
};

TEST(WorkItem, IdentifiersHaveTheirTextForm) {
    EXPECT_EQ(ParseGuid("793307D6-FE55-4055-B134-3AAFB14D0A74"), kWorkItemRequestId);
    EXPECT_EQ(ParseGuid("AD0BE999-84A4-4245-9372-B24A16498199"), kWorkItemQueueRequestId);
    EXPECT_EQ(ParseGuid("4F9CB3F7-C5DF-4F33-B5A5-784CDF9C3FB9"), kWorkItemUnknownId);
}

TEST(WorkItem, QueriesByIdentifier) {
    struct Case {
        const char* id;
        bool known;
    };
    const Case cases[] = {
        {"793307D6-FE55-4055-B134-3AAFB14D0A74", true},
        {"AD0BE999-84A4-4245-9372-B24A16498199", true},
        {"4F9CB3F7-C5DF-4F33-B5A5-784CDF9C3FB9", true},
        {"793307D6-FE55-4055-B134-3AAFB14D0A75", false},  // last byte differs
        {"D6073379-55FE-5540-B134-3AAFB14D0A74", false},  // big-endian reading of the first
        {"00000000-0000-0000-C000-000000000046", false},
        {"00000000-0000-0000-0000-000000000000", false},
    };
    WorkItemRef item = CreateWorkItem();
    ASSERT_TRUE(item);
    for (const Case& c : cases) {
        const Talc::Guid id = ParseGuid(c.id);
        void* out = reinterpret_cast<void*>(&item);  // must be overwritten either way
        const Talc::Result noAddRef = item->QueryInterfaceNoAddRef(id, &out);
        EXPECT_EQ(noAddRef, c.known ? 0 : static_cast<Talc::Result>(0xA00A0001u)) << c.id;
        EXPECT_EQ(out, c.known ? static_cast<void*>(static_cast<Talc::TalcUnknown*>(item.Get()))
                               : nullptr)
            << c.id;
        // The count is 1 (held by `item`): AddRef reports it plus one.
        EXPECT_EQ(item->AddRef(), 2u) << c.id << ": NoAddRef must not count";
        item->Release();

        out = reinterpret_cast<void*>(&item);
        const Talc::Result counted = item->QueryInterface(id, &out);
        EXPECT_EQ(counted, noAddRef) << c.id;
        EXPECT_EQ(item->AddRef(), c.known ? 3u : 2u) << c.id;
        item->Release();
        if (c.known) {
            EXPECT_EQ(static_cast<Talc::TalcUnknown*>(out)->Release(), 1u) << c.id;
        } else {
            EXPECT_EQ(out, nullptr);
        }
    }
}

TEST(WorkItem, LastReleaseDestroysTheWorker) {
    Probe probe;
    WorkItem* raw = nullptr;
    {
        WorkItemRef item = CreateWorkItem();
        item->SetWorker(probe.MakeWorker());
        raw = item.Get();
        EXPECT_EQ(raw->AddRef(), 2u);
        WorkItem* other = nullptr;
        EXPECT_EQ(raw->GetReference(&other), raw);
        EXPECT_EQ(other, raw);
        EXPECT_EQ(raw->Release(), 2u);
        EXPECT_EQ(raw->Release(), 1u);
        EXPECT_EQ(probe.destroyed, 0);
    }
    EXPECT_EQ(probe.destroyed, 1);
    EXPECT_EQ(probe.runs, 0);
}

TEST(WorkItem, RunsItsWorkerWhenSet) {
    WorkItemRef item = CreateWorkItem();
    item->Run();  // no worker: nothing happens
    Probe probe;
    item->SetWorker(probe.MakeWorker());
    item->Run();
    item->Run();
    EXPECT_EQ(probe.runs, 2);
}

TEST(WorkItemRef, CopiesCountAndEmptyThrows) {
    Probe probe;
    {
        WorkItemRef item = CreateWorkItem();
        item->SetWorker(probe.MakeWorker());
        WorkItemRef copy = item;
        WorkItemRef moved = std::move(copy);
        EXPECT_FALSE(copy);
        EXPECT_EQ(item->AddRef(), 3u);
        item->Release();
        item = WorkItemRef();
        EXPECT_EQ(probe.destroyed, 0);
        EXPECT_EQ(get_pointer(moved), moved.Get());
    }
    EXPECT_EQ(probe.destroyed, 1);

    WorkItemRef empty;
    try {
        empty->Run();
        FAIL() << "dereferencing an empty reference must throw";
    } catch (const Talc::NullInterfaceException& error) {
        EXPECT_STREQ(error.what(), "A NULL interface pointer has been dereferenced.");
    }
}

// References taken and dropped on several threads at once: the item is
// destroyed exactly once, after the last release.
TEST(WorkItem, ConcurrentReferencesDestroyOnce) {
    Probe probe;
    WorkItemRef item = CreateWorkItem();
    item->SetWorker(probe.MakeWorker());
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([copy = item]() mutable {
            for (int i = 0; i < 10000; ++i) {
                WorkItemRef extra = copy;
                extra->Run();
            }
        });
    }
    item = WorkItemRef();
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(probe.runs, 40000);
    EXPECT_EQ(probe.destroyed, 1);
}

}  // namespace
