/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A host that loads the libraries late and again and again, with threads that outlive the use of
 * them.  Prints how often every answer was right.  Arguments: libstrservices, libstr.
 */
#include <str/charset.h>

#include <dlfcn.h>
#include <pthread.h>
#include <stdio.h>
#include <string.h>

#define ROUNDS 50

static int (*describe)(const char *, CSDescriptor *);
static char *(*upper)(const char *, int, int *, const CSDescriptor *);
static char *(*split)(const char *, int, char **, unsigned int *, unsigned int *,
                      const CSDescriptor *);
static pthread_barrier_t done, closed;

/* Asks by a pointer to bytes, since C has no conversion from objects to functions. */
static int find(void *library, const char *name, void *function)
{
    void *const symbol = dlsym(library, name);
    memcpy(function, &symbol, sizeof symbol);
    return symbol != NULL;
}

static void *use(void *right)
{
    CSDescriptor cs;
    char *rest = NULL;
    unsigned int first = 0, second = 0;
    int length = 0;
    *(int *)right = describe("ISO-8859-1", &cs) &&
                    strcmp(upper("a\xE9", -1, &length, &cs), "A\xC9") == 0 &&
                    strcmp(split("abc", 2, &rest, &first, &second, &cs), "ab") == 0;
    pthread_barrier_wait(&done);
    pthread_barrier_wait(&closed);
    return NULL;
}

int main(int argc, char **argv)
{
    int count = 0;
    if (argc != 3)
        return 1;
    pthread_barrier_init(&done, NULL, 2);
    pthread_barrier_init(&closed, NULL, 2);
    for (int round = 0; round < ROUNDS; ++round) {
        void *const services = dlopen(argv[1], RTLD_NOW | RTLD_GLOBAL);
        void *const library = dlopen(argv[2], RTLD_NOW);
        int right = 0;
        pthread_t thread;
        if (library == NULL || !find(services, "ccs_GetCSDescriptor", &describe) ||
            !find(library, "str_ToUpper", &upper) || !find(library, "str_SplitByDispLen", &split))
            return 1;
        if (pthread_create(&thread, NULL, use, &right) != 0)
            return 1;
        pthread_barrier_wait(&done);
        dlclose(library);
        dlclose(services);
        pthread_barrier_wait(&closed);
        pthread_join(thread, NULL);
        count += right;
    }
    printf("%d of %d\n", count, ROUNDS);
    return 0;
}
