// cache/greedy_cra_data.h — the replacement policy's state that a cache keeps
// in its untyped `CRA_Data` property (folder-private).
//
// The cache destroys the state through `CRA_Data_Delete` without knowing the
// policy; the greedy policy's state holds the serial executor on which the
// cache's background passes run.
#pragma once

#include <boost/shared_ptr.hpp>

#include "host/executor.h"

// Base of every policy state: only the deleting destructor is virtual.
class CRA_Data_Delete {
public:
    virtual ~CRA_Data_Delete() = default;
};

// State of the greedy policy. The template parameters name the entry type and
// its weighting; the state itself does not depend on them.
template <typename FactoryBox, typename Weight>
class Greedy_CRA_Data : public CRA_Data_Delete {
public:
    ~Greedy_CRA_Data() override = default;  // drops the shared reference

    // The cache's serial executor; empty until the policy is initialised.
    boost::shared_ptr<vantor::threads::AsyncThreadedExecutor> executor;
};
