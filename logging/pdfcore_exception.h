// The exception of the suite's PDF core library, caught by the barriers. The library throws its own class,
// which is matched by its name; the error code is read from the library (suite_libraries.h).
#pragma once

class pdfcore_exception
{
};
