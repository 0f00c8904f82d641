#pragma once
// Everything of this layer, for applications.

#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

// messages, memory and containers
#include <Kit/KitArray.h>
#include <Kit/KitAssoc.h>
#include <Kit/KitChunk.h>
#include <Kit/KitHash.h>
#include <Kit/KitMemory.h>
#include <Kit/KitMemoryPool.h>
#include <Kit/KitMessage.h>
#include <Kit/KitMessageQueue.h>
#include <Kit/KitPool.h>
#include <Kit/KitProfile.h>
