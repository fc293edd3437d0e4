/** @file processing.h
 *  What stands between a camera and an encoder, and between a decoder and a screen: deinterlacing, denoising,
 *  conversion.
 */
#ifndef VEKVC_PROCESSING_H
#define VEKVC_PROCESSING_H

#include "vekvc/processing_convert.h"
#include "vekvc/processing_deinterlace.h"
#include "vekvc/processing_denoise.h"

#endif
