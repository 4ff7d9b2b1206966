// Tests of the work item: interface queries, and counted references taken
// and dropped from several threads.
#include "cache/work_item.h"

#include <gtest/gtest.h>

#include <atomic>
#include <utility>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "host/talc_exception.h"

namespace {

// An identifier from its text form: the first three groups little-endian,
// the last two byte by byte.
Talc::Guid ParseGuid(const std::string& text) {
    const size_t positions[16] = {6, 4, 2, 0, 11, 9, 16, 14, 19, 21, 24, 26, 28, 30, 32, 34};
    uint8_t bytes[16];
    for (int i = 0; i < 16; ++i) {
        bytes[i] = static_cast<uint8_t>(std::stoul(text.substr(positions[i], 2), nullptr, 16));
    }
    Talc::Guid guid;
    std::memcpy(&guid, bytes, sizeof guid);
    return guid;
}

// A worker that reports its runs and its destruction.
struct Probe {
    std::atomic<int> runs{0}, destroyed{0};
    std::unique_ptr<WorkItem::Worker> MakeWorker() {
        struct Worker : WorkItem::Worker {
            explicit Worker(Probe* probe) : probe(probe) {}
            ~Worker() override { ++probe->destroyed; }
            void Run() override { ++probe->runs; }
            Probe* probe;
        };
        return std::make_unique<Worker>(this);
    }
};

// The three known identifiers give the item; any other null and the failure
// result. QueryInterface counts a reference, NoAddRef does not.
TEST(WorkItem, QueriesByIdentifier) {
    const std::pair<const char*, bool> cases[] = {
        {"793307D6-FE55-4055-B134-3AAFB14D0A74", true},
        {"AD0BE999-84A4-4245-9372-B24A16498199", true},
        {"4F9CB3F7-C5DF-4F33-B5A5-784CDF9C3FB9", true},
        {"793307D6-FE55-4055-B134-3AAFB14D0A75", false},
        {"D6073379-55FE-5540-B134-3AAFB14D0A74", false},  // big-endian reading of the first
        {"00000000-0000-0000-C000-000000000046", false},
    };
    const auto kNoInterface = static_cast<Talc::Result>(0xA00A0001u);
    WorkItemRef item = CreateWorkItem();
    ASSERT_TRUE(item);
    void* const self = static_cast<Talc::TalcUnknown*>(item.Get());
    for (const auto& [text, known] : cases) {
        const Talc::Guid id = ParseGuid(text);
        void* out = &item;  // overwritten either way
        EXPECT_EQ(item->QueryInterfaceNoAddRef(id, &out), known ? 0 : kNoInterface) << text;
        EXPECT_EQ(out, known ? self : nullptr) << text;
        out = &item;
        EXPECT_EQ(item->QueryInterface(id, &out), known ? 0 : kNoInterface) << text;
        EXPECT_EQ(out, known ? self : nullptr) << text;
        EXPECT_EQ(item->AddRef(), known ? 3u : 2u) << text;  // 1 held by `item`
        item->Release();
        if (known) {
            EXPECT_EQ(static_cast<Talc::TalcUnknown*>(out)->Release(), 1u) << text;
        }
    }
}

// References taken and dropped on several threads: the worker runs every
// time and is destroyed once, after the last release. An empty reference
// throws when used.
TEST(WorkItem, ReferencesRunTheWorkerAndTheLastDestroysIt) {
    Probe probe;
    WorkItemRef item = CreateWorkItem();
    item->Run();  // no worker yet: nothing happens
    item->SetWorker(probe.MakeWorker());
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([copy = item]() mutable {
            for (int i = 0; i < 10000; ++i) WorkItemRef(copy)->Run();
        });
    }
    item = WorkItemRef();
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(probe.runs, 40000);
    EXPECT_EQ(probe.destroyed, 1);
    try {
        item->Run();
        ADD_FAILURE() << "dereferencing an empty reference must throw";
    } catch (const Talc::Exception& error) {
        EXPECT_NE(dynamic_cast<const Talc::NullInterfaceException*>(&error), nullptr);
        EXPECT_STREQ(error.what(), "A NULL interface pointer has been dereferenced.");
    }
}

}  // namespace
