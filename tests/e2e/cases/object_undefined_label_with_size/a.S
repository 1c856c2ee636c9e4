	.size u, 2
	bl u
