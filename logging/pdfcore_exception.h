// What the suite's PDF core library throws. Only its name matters: the library throws its own type of this
// name, and the code of the exception in flight is asked of the library (see suite_libraries.h).
#pragma once

class pdfcore_exception
{
};
