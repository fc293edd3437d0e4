/** @file vekvc.h
 *  vekvc: block kernels for video encoders, decoders and transcoders. Include this header; nothing else is needed.
 *
 *  Common to all functions: no call keeps state or a pointer to the caller's memory; all may run at the same time on
 *  different outputs. Steps are signed counts of bytes between the starts of two rows unless a function says otherwise.
 *  No pointer needs alignment. Arguments are checked before any work, null pointers first; an error writes nothing
 *  unless the function says otherwise. A function reads and writes only the bytes that its description names.
 */
#ifndef VEKVC_H
#define VEKVC_H

#include "vekcore.h"
#include "vekvc/avs.h"
#include "vekvc/common.h"
#include "vekvc/dct.h"
#include "vekvc/dv.h"
#include "vekvc/h264.h"
#include "vekvc/mpeg2.h"
#include "vekvc/mpeg4.h"
#include "vekvc/processing.h"
#include "vekvc/types.h"
#include "vekvc/vc1.h"
#include "vekvc/vlc.h"

#endif
