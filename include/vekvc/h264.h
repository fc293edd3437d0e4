/** @file h264.h
 *  H.264/AVC: residual coding, transforms, prediction and filters. One header per step of the decoding process.
 */
#ifndef VEKVC_H264_H
#define VEKVC_H264_H

#include "vekvc/h264_cavlc.h"
#include "vekvc/h264_deblock.h"
#include "vekvc/h264_interpolate.h"
#include "vekvc/h264_reconstruct.h"
#include "vekvc/h264_transform.h"
#include "vekvc/h264_weight.h"

#endif
