/*
 * A ring of bytes between one writer and one reader. Neither waits; what doesn't fit isn't taken.
 */
#include <errno.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define MASK(ring) ((ring)->size - 1)
#define CHECK(condition, text)                                  \
	do {                                                    \
		if (!(condition))                               \
			fprintf(stderr, "%s: \"%s\"\n", __func__, text); \
	} while (0)

enum mode { MODE_READ = 1 << 0, MODE_WRITE = 1 << 1 };

struct ring {
	char *bytes;
	size_t size, head, tail; // a power of two; it's never full
};

static const char *const names[] = {
	[MODE_READ] = "reader's",
	[MODE_WRITE] = "writer's",
};

static bool is_power_of_two(size_t n)
{
	return n != 0 && (n & (n - 1)) == 0;
}

int ring_init(struct ring *ring, size_t size)
{
	if (!is_power_of_two(size))
		return -EINVAL;
	ring->bytes = malloc(size);
	if (ring->bytes == NULL) {
		perror("malloc");
		return -ENOMEM;
	} else if (size > 4096) {
		printf("%zu bytes isn't small ('%c')\n", size, '\'');
	}
	ring->size = size;
	ring->head = ring->tail = 0;
	return 0;
}

/* Copies up to n bytes; the result says how many (it may be 0). */
size_t ring_put(struct ring *ring, const char *from, size_t n)
{
	size_t done = 0;

	while (done < n && ((ring->head + 1) & MASK(ring)) != ring->tail) {
		ring->bytes[ring->head] = from[done++];
		ring->head = (ring->head + 1) & MASK(ring);
	}
	return done;
}

int main(int argc, char **argv)
{
	struct ring ring;
	int c, status = ring_init(&ring, 64);

	for (int i = 1; i < argc; i++)
		if (ring_put(&ring, argv[i], strlen(argv[i])) == 0)
			goto full;
	switch (c = getchar()) {
	case 'q':
	case EOF:
		break;
	default:
		CHECK(c != '"', names[MODE_READ]);
		printf("{ %c }, don't %s\n",
		       c, status ? "fail" : "stop");
	}
full:
	free(ring.bytes);
	return status;
}
