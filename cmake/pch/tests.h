// The common headers of the test suites; see core.h.
#pragma once

#include "core.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
