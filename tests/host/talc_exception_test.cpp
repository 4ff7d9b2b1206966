// Tests of the foundation library's exceptions.
#include "host/talc_exception.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

TEST(TalcExceptionTest, NullInterfaceExceptionCarriesItsTextThroughEveryBase) {
    try {
        throw Talc::NullInterfaceException();
    } catch (const Talc::Exception& error) {
        EXPECT_STREQ(error.what(), "A NULL interface pointer has been dereferenced.");
    }
    try {
        throw Talc::NullInterfaceException();
    } catch (const std::exception& error) {
        EXPECT_STREQ(error.what(), "A NULL interface pointer has been dereferenced.");
    }
}

}  // namespace
