#include "../engine/HeapCounter.cpp" // one counter serves all layers, each in its own executable
