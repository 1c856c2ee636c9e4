	bu fwd
	nop
fwd:
