// What must hold of anything built on host memory when that memory is out.
#pragma once

#include <gtest/gtest.h>

#include "support/HeapOnlyHost.h"

namespace orv::testing {

// `failed(host)` builds something on the host, drops it and tells whether it had failed. With memory enough it must
// not fail; with any one of its allocations refused it must, and give back all the others.
template <class Failed>
void ExpectFailureAtEveryAllocation(const Failed& failed) {
  HeapOnlyHost host;
  EXPECT_FALSE(failed(host));
  const int requests = host.Requests();
  ASSERT_GT(requests, 0);
  for (int failing = 1; failing <= requests; ++failing) {
    host.FailAllocation(failing);
    EXPECT_TRUE(failed(host)) << "allocation " << failing;
    EXPECT_EQ(host.LiveBlocks(), 0) << "allocation " << failing;
  }
}

}  // namespace orv::testing
