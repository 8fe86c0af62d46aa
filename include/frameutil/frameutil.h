// frameutil/frameutil.h - the whole library; each header of a family can be included alone.
#pragma once

#include "frameutil/codec.h"
#include "frameutil/log.h"
#include "frameutil/msg.h"
#include "frameutil/paraset.h"
#include "frameutil/platform.h"
#include "frameutil/sql.h"
#include "frameutil/strutil.h"
#include "frameutil/table.h"
#include "frameutil/version.h"
