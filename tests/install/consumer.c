/* A user of the installed library: prints how many interfaces the host has. Builds as C and as C++.
 */
#include <stdio.h>
#include <tarnnet.h>

int main(void) {
    struct tarnnet_filter* filter = tarnnet_get_simple_filter(IFT_ALL, NULL, NULL, NULL, 0, 0);
    struct tarnnet_info* result = tarnnet_get_info(TARNNET_EVERYTHING, filter);
    unsigned count = 0;
    while (result != NULL && result->records[count] != NULL) {
        count++;
    }
    tarnnet_release_filter(filter);
    tarnnet_release_info(result);
    printf("%u\n", count);
    return 0;
}
