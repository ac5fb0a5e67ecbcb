#include "qvn/qvn.h"
