/**
 * @file adp.h
 * The switch adaptation layer: everything that libadp exports.
 */
#pragma once

#include <adp/agg.h>
#include <adp/fp.h>
#include <adp/l2.h>
#include <adp/pkt.h>
#include <adp/port.h>
#include <adp/qos.h>
#include <adp/stg.h>
#include <adp/types.h>
#include <adp/vlan.h>
