	.set a, 5
	.set b, a
	.set c, a + b
d = .
	f.nstackwords = 4
	.maxtimers = 2
	.size f, 8
	.size g, . - f
	.set a, 6
	.set b, c
	.set b, d
