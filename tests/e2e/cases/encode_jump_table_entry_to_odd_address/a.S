# A compact jump table entry whose target lies at an odd address: error 51 when the entry is
# encoded, which ends the run with the object half made; nothing of it is left behind.
sel:
	bru r1
	.jmptable near, sel
	.skip 119
near:
	.byte 1
