	.section .dp.data, "awd", @progbits
	.word a + 1, .-a, (a)
	.word -a
	.word a << 2, a & 1, ~a, a / 2
	.word -a * 2
	.set x, -y
