#pragma once

// What no file of desk/imf may include.
#include "desk/media/Sequence.h"
#include <QtWidgets/QWidget>
