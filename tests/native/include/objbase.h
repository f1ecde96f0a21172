// Empty: plain code does not use COM.
#pragma once
