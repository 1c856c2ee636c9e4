# A compact table whose far target needs a trampoline, one whose targets are all in reach, and a
# table of 4-byte entries, which the object doesn't mark.
	.text
sel:
	bru r0
	.jmptable near, far, near
	.skip 120
near:
	ldc r0, 1
	.jmptable near, near
far:
	bru r1
	.jmptable32 near, far
	retsp 0
