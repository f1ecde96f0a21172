// Headers that nearly every file of the stand-ins includes. Each file still includes what it uses.
#pragma once

#include <windows.h>

#include <mshtml.h>
#include <oaidl.h>
#include <ole2.h>

#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>
