#include <Block.h> // what GNUstep's headers look for under this name
