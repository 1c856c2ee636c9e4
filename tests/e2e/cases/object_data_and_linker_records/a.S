	.section .dp.data, "awd", @progbits
d:	.word a, a + 1, . - d, (b)
	.byte 255, -1
	.short 0x1234
	.uleb128 127, 128, s
	.sleb128 -64, 64
	.ascii "ab"
	.asciiz "c"
	.set x, a + b
	.set y, 5
	.set z, a
	f.nstackwords = 4
	.size d, 24
