// Plain code uses nothing of COM.
#pragma once
