	.section .d, "aw", @progbits
d:	.byte 0x1f, 'a', -3, 255
	.short 0x8000, 7, d
	.word 0xdeadbeef
	.uleb128 128, 0x7f, 624485
	.sleb128 -64, 64, -123456
	.word 1+2, 3*4, (5)
	.int 010
