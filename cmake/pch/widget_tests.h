// The common headers of the window test suites; see core.h.
#pragma once

#include "tests.h"
#include "widgets.h"

#include <QSignalSpy>
#include <QTest>
