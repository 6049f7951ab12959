/*
 * Ostrum: compiler library for TOLL, reader and writer of KOB module files, printer of engineering
 * quantities. This header is all that a client includes; it is valid C11 and valid C++20.
 *
 * The library is single-threaded and keeps state for the whole process. Texts are 8-bit and
 * zero-terminated; what an operation gives stays the library's unless its description says that the
 * caller frees it.
 */
#ifndef OSTRUM_H
#define OSTRUM_H

/* Core services */
#include <ostrum/as.h>
#include <ostrum/bf.h>
#include <ostrum/c.h>
#include <ostrum/errmsg.h>
#include <ostrum/f.h>
#include <ostrum/hs.h>
#include <ostrum/ifc.h>
#include <ostrum/ist.h>
#include <ostrum/qlv.h>
#include <ostrum/quillreg.h>
#include <ostrum/sh.h>
#include <ostrum/sld.h>
#include <ostrum/sm.h>
#include <ostrum/st.h>
#include <ostrum/tid.h>
#include <ostrum/tim.h>

/* Command interpreter */
#include <ostrum/cli.h>

/* Engineering units */
#include <ostrum/euc.h>

/* Language front end */
#include <ostrum/extra.h>
#include <ostrum/tlp.h>
#include <ostrum/tlt.h>

/* Names and types */
#include <ostrum/tli.h>
#include <ostrum/tlic.h>
#include <ostrum/tlit.h>
#include <ostrum/tliv.h>

/* Expressions and statements */
#include <ostrum/tlb.h>
#include <ostrum/tle.h>
#include <ostrum/tlo.h>
#include <ostrum/tls.h>
#include <ostrum/tlsc.h>
#include <ostrum/tlsl.h>
#include <ostrum/tlss.h>

/* Data sections */
#include <ostrum/tld.h>
#include <ostrum/tldc.h>
#include <ostrum/tldh.h>
#include <ostrum/tldm.h>
#include <ostrum/tldv.h>
#include <ostrum/tldw.h>

/* Code generation */
#include <ostrum/eep.h>
#include <ostrum/tlc.h>
#include <ostrum/tlcc.h>
#include <ostrum/tlcg.h>
#include <ostrum/tlcj.h>

/* Module files */
#include <ostrum/kob.h>
#include <ostrum/kobd.h>
#include <ostrum/kobr.h>

#endif
