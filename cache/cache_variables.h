// cache/cache_variables.h — the state of a generic cache (folder-private):
// its property values, its two indexes and its lock. Owned by
// CacheImplementation, which keeps the indexes consistent.
#pragma once

#include <map>

#include "cache/factory_box.h"
#include "cache/properties.h"
#include "host/recursive_mutex.h"

template <typename Ticket, typename Data, typename Factory, typename ExtraData = EmptyExtraData>
class CacheVariables : public CachePropertiesImpl {
protected:
    using Box = Factory_Box<Ticket, Factory, ExtraData>;

    // Key → its boxes; several boxes may share a key. Owns the boxes.
    std::multimap<Ticket, Box*> ticketIndex;
    // Handle → box, one node for every handle a client holds.
    std::multimap<Data, Box*> dataIndex;
    vantor::threads::RecursiveMutex mutex;
};
