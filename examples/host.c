/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A host that replaces three services and takes the others as they are. It also does some work that
 * an escape may end, and goes on after it.
 *
 *     cc -std=c11 host.c -o host $(pkg-config --cflags --libs libstr)
 */
#include <platform/ccs.h>
#include <platform/er.h>
#include <platform/os.h>
#include <services/services.h>
#include <str/str.h>

#include <stdio.h>
#include <stdlib.h>

enum { OUR_SET = 900, OUR_CLASS = 100, TOO_WIDE = 1 };

/* Traces go to standard output. */
void er_RealLogProc(int traceClass, const char *text, int marker)
{
    printf("trace %d %s %d\n", traceClass, text, marker);
}

/* Memory is counted. */
static size_t bytes_taken;

void *os_malloc(size_t size)
{
    void *block = malloc(size > 0 ? size : 1);
    if (block == NULL)
        er_TracedEscape(ER_CLASS_LIBRARY, OS_ESC_MEMORY, "host", __LINE__);
    bytes_taken += size;
    return block;
}

/* There is one set more, in which every byte is a character. */
uint32_t ccs_GetCSFlags(const CSDescriptor *cs)
{
    ccs_SetInfo set;
    for (int i = 0; ccs_GetSetInfo(i, &set); i++)
        if (set.number == cs->csNum)
            return set.flags;
    return cs->csNum == OUR_SET ? CS_FLAG_BYTE : 0;
}

/* What the work and its caller share. */
struct job {
    const char *text;
    unsigned int columns;
    const char *upper;
};

static void work(void *context)
{
    static const CSDescriptor ours = {OUR_SET, 0};
    struct job *job = context;
    int length;

    job->columns = str_dispstrlen(job->text, &ours);
    if (job->columns > 10)
        er_TracedEscape(OUR_CLASS, TOO_WIDE, "host", __LINE__);
    job->upper = str_ToUpper(job->text, -1, &length, &ours);
}

static void run(const char *text)
{
    struct job job = {text, 0, NULL};
    if (er_Protect(work, &job)) {
        printf("%u columns, \"%s\", %s\n", job.columns, job.upper,
               bytes_taken > 0 ? "memory taken" : "no memory taken");
    } else {
        er_Status escape;
        er_RecordStatus(&escape);
        er_Clear();
        printf("%u columns, escape %d of class %d\n", job.columns, (int)escape.code,
               (int)escape.escapeClass);
    }
}

int main(void)
{
    er_SubSystemLoggingLevel = 10;
    run("much too wide");
    run("narrow");
    return 0;
}
/* prints:
 * trace 19 str_dispstrlen 1
 * trace 19 escape 1 at host:62 -1
 * 13 columns, escape 1 of class 100
 * trace 19 str_dispstrlen 1
 * trace 19 str_ToUpper 1
 * trace 19 str_ToUpper 0
 * 6 columns, "narrow", memory taken
 */
