	.cc_top f.function
	.cc_top g.function
	.cc_bottom f.function
	.cc_bottom f.function
