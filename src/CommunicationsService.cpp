#include "CommunicationsServiceFactories.h"
